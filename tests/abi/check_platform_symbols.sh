#!/usr/bin/env bash
# Checks the interface of the platform runtime: every symbol it exports belongs to a type of the platform
# headers (marlo::, corva::, DMR_CMN_, SINK_CORE_), the operations a host and the plug-in need are there,
# and none of the runtime's own helpers (dmr_runtime::) or standard library template code is visible.
#   usage: check_platform_symbols.sh <path to libdmr_platform.so>
set -euo pipefail
library=$1

symbols=$(nm -D --defined-only "$library" | cut -d' ' -f3- | c++filt)
allowed='^((vtable|typeinfo|typeinfo name) for |non-virtual thunk to )?(marlo::|corva::|DMR_CMN_|SINK_CORE_)'

status=0
stray=$(grep -Ev "$allowed" <<<"$symbols" || true)
if [[ -n "$stray" ]]; then
  echo "exported although no part of the platform interface:"
  echo "$stray"
  status=1
fi

for wanted in 'DMR_CMN_String::SetCString(' 'DMR_CMN_UPnPEventingThread::' 'marlo::LastChange::' \
    'marlo::ActionRequest::AddArgument(' 'marlo::Device::SetServerIPAddress(' 'corva::MediaMetaData::' \
    'DMR_CMN_FaultInjection::Arm(' 'vtable for DMR_CMN_Thread'; do
  if ! grep -qF "$wanted" <<<"$symbols"; then
    echo "missing from the interface: $wanted"
    status=1
  fi
done

[[ $status -eq 0 ]] && echo "$(wc -l <<<"$symbols") symbols, all of the platform interface"
exit $status
