#!/usr/bin/env bash
# Sets up and builds the renderer, then runs it.
#
# The renderer daemon is not built yet: until it is, this runs a short demonstration of the open runtime
# that the daemon will stand on (an eventing thread delivering a LastChange document, DIDL-Lite metadata,
# the protocol-info list of a configuration).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
echo "== building"
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j"$(nproc)" --target runtime_demo
exec build/host/runtime_demo "$@"
