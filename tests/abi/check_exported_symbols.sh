#!/usr/bin/env bash
# Checks the interface of the plug-in library: every symbol it exports belongs to one of the six classes an
# application or host may use, the operations they need are there, and none of the plug-in's inner
# functions or data is visible.
#   usage: check_exported_symbols.sh <path to libsink_upnp.so>
set -euo pipefail
library=$1

symbols=$(nm -D --defined-only "$library" | cut -d' ' -f3- | c++filt)
classes='SINK_UPNP_SinkCTSSUPnPService|SINK_UPNP_OpenHomeUPnPService|SINK_UPNP_SinkCTSSStateVariableManager'
classes+='|SINK_UPNP_OpenHomeStateVariableManager|PLAYLIST_PlaylistManager|PLAYLIST_PlaylistData'
allowed="^((vtable|typeinfo|typeinfo name) for |non-virtual thunk to )?(${classes})(::|$)"

status=0
stray=$(grep -Ev "$allowed" <<<"$symbols" || true)
if [[ -n "$stray" ]]; then
  echo "exported although no part of the interface:"
  echo "$stray"
  status=1
fi

for wanted in \
    'SINK_UPNP_OpenHomeUPnPService::PerformAction(' \
    'SINK_UPNP_OpenHomeUPnPService::RegisterTransferService(' \
    'SINK_UPNP_SinkCTSSUPnPService::PerformAction(' \
    'SINK_UPNP_OpenHomeStateVariableManager::ChangeStateVariable(' \
    'SINK_UPNP_SinkCTSSStateVariableManager::SendEvent(' \
    'PLAYLIST_PlaylistManager::GetCurrentTrackData(' \
    'PLAYLIST_PlaylistManager::GetNextTrackData(' \
    'PLAYLIST_PlaylistData::setUri(' \
    'vtable for SINK_UPNP_OpenHomeUPnPService'; do
  if ! grep -qF "$wanted" <<<"$symbols"; then
    echo "missing from the interface: $wanted"
    status=1
  fi
done

for hidden in SINK_UPNP_EscapeXmlText PLAYLIST_BuildTrackList SINK_UPNP_WriteUPnPError \
    SINK_UPNP_stateVariableNameTable SINK_UPNP_ServiceFrame; do
  if grep -qF "$hidden" <<<"$symbols"; then
    echo "visible although inner: $hidden"
    status=1
  fi
done

[[ $status -eq 0 ]] && echo "$(wc -l <<<"$symbols") symbols, all of the interface"
exit $status
