#!/usr/bin/env bash
# Sets up what the renderer needs on Debian, builds it, and starts it with sane defaults: every usable
# network interface, the system's audio device when there is one (else a real-time null output, said in
# the log), its identity kept in ~/.local/state/open-renderer. Options are passed on, for example:
#   ./scripts/run.sh --interface eth0 --output alsa --device hw:0 --name "Kitchen"
#   ./scripts/run.sh --help
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
echo "== building"
export CCACHE_BASEDIR="$PWD"
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j"$(nproc)" --target open-renderer
exec build/host/open-renderer "$@"
