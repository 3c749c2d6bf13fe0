#!/usr/bin/env bash
# The side-by-side comparison in one command, as root:
#   bench/compare/run.sh [--quick] [BUILD_DIR [RESULTS_FILE]]
# Installs the peers from Debian when they are missing (gmediarender, rygel-playbin) and valgrind, builds what
# it measures in BUILD_DIR (default build/), then runs compare.py in a private network namespace that it makes
# and deletes. Writes the tables to RESULTS_FILE (default bench/compare/results.md). --quick: 200 calls per
# mode, one round of everything, no 30 s CPU run; about two minutes. --only-if-asked (for ctest): exit 77
# unless DMR_BENCH=1.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
checkout=$(cd "$here/../.." && pwd)
quick=()
while [ $# -gt 0 ]; do
  case $1 in
    --quick) quick=(--quick) ;;
    --only-if-asked) [ "${DMR_BENCH:-0}" = 1 ] || { echo "skipped: set DMR_BENCH=1 to run the comparison"; exit 77; } ;;
    *) break ;;
  esac
  shift
done
build=${1:-$checkout/build}
results=${2:-$here/results.md}

if [ "$(id -u)" -ne 0 ]; then
  echo "bench/compare/run.sh: needs root (a network namespace, apt-get)" >&2
  exit 77
fi

missing=()
command -v gmediarender >/dev/null || missing+=(gmediarender)
[ -e /usr/lib/x86_64-linux-gnu/rygel-2.8/plugins/librygel-playbin.so ] || dpkg -s rygel-playbin >/dev/null 2>&1 ||
  missing+=(rygel rygel-playbin)
command -v valgrind >/dev/null || missing+=(valgrind)
if [ ${#missing[@]} -gt 0 ]; then
  echo "== installing ${missing[*]} from Debian"
  DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
fi

if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$checkout" -B "$build" -G Ninja
fi
cmake --build "$build" -j"$(nproc)" --target open-renderer floor_device tcp_floor compare_soap_bench gstbenchsink \
  runtime_bench state_variable_bench service_bench playlist_bench

# Debug output of any stack would be measured with it.
unset GUPNP_DEBUG G_MESSAGES_DEBUG GST_DEBUG
exec python3 "$here/compare.py" --build "$build" --results "$results" "${quick[@]}"
