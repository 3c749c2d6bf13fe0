#!/usr/bin/env bash
# The daemon's SOAP round trip and idle memory against our UPnP stack's floor:
#   bench/host/run.sh [BUILD_DIR [RESULTS_FILE [host_soap_bench options...]]]
# BUILD_DIR defaults to build/, RESULTS_FILE to bench/host/results.md. Needs root: both devices and the
# client run in a private network namespace made here (loopback only) and deleted on the way out, so that
# nothing reaches any other network and no other process shares the ports. Without root it says so and
# skips. Build first:
#   cmake --build build --target open-renderer floor_device host_soap_bench
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
checkout=$(cd "$here/../.." && pwd)
build=$(cd "${1:-$checkout/build}" && pwd)
results=${2:-$here/results.md}
shift $(($# > 2 ? 2 : $#))

if [ "$(id -u)" -ne 0 ]; then
  echo "bench/host/run.sh: skipped: making a network namespace needs root" >&2
  exit 0
fi
daemon=$build/host/open-renderer
floor=$build/bench/host/floor_device
client=$build/bench/host/host_soap_bench
for program in "$daemon" "$floor" "$client"; do
  if [ ! -x "$program" ]; then
    echo "bench/host/run.sh: $program is missing; build open-renderer, floor_device and host_soap_bench" >&2
    exit 1
  fi
done

# Debug output of GUPnP or GLib would be measured with the stack; neither may be on.
unset GUPNP_DEBUG G_MESSAGES_DEBUG

namespace=dmr-host-bench-$$
work=$(mktemp -d)
pids=()
# shellcheck disable=SC2317  # run by the EXIT trap
cleanup() {
  for pid in "${pids[@]}"; do kill -TERM "$pid" 2>/dev/null || true; done
  for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null || true; done
  ip netns delete "$namespace" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

ip netns add "$namespace"
ip -n "$namespace" link set lo up
# SSDP over IPv6 goes to ff0x::c; without a multicast route on the namespace's loopback every announcement
# fails with a warning.
ip -n "$namespace" -6 route add multicast ff00::/8 dev lo table local
# Below the ephemeral range (32768-60999), so that no client connection's port can be in the way.
ours_port=20700
floor_port=20701
mkdir -p "$work/ours" "$work/floor"
# Started by ip directly, not through a shell function: $! must be the device's own process, which ip
# becomes.
ip netns exec "$namespace" "$daemon" --interface lo --port "$ours_port" --output null --state-dir "$work/ours" \
  --name Bench >"$work/ours.log" 2>&1 &
pids+=($!)
ours_pid=$!
ip netns exec "$namespace" "$floor" --interface lo --port "$floor_port" --docroot "$build/host/docroot" \
  --state-dir "$work/floor" >"$work/floor.log" 2>&1 &
pids+=($!)
floor_pid=$!

# Prints the IPv4 description URL of a "ready:" line once the log has one; fails when the process ended
# or after 20 s.
location_of() {
  local pid=$1 log=$2 url
  for _ in $(seq 200); do
    url=$(grep -o -m1 'ready: http://127\.0\.0\.1:[0-9]*/[^ ]*' "$log" | cut -d' ' -f2 || true)
    if [ -n "$url" ]; then
      echo "$url"
      return 0
    fi
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  echo "bench/host/run.sh: no \"ready:\" line from $log:" >&2
  cat "$log" >&2
  return 1
}
ours_url=$(location_of "$ours_pid" "$work/ours.log")
floor_url=$(location_of "$floor_pid" "$work/floor.log")

# Idle after start-up: the first announcements sent and each service's own description read.
sleep 2
status=0
ip netns exec "$namespace" "$client" --ours "$ours_pid" "$ours_url" --floor "$floor_pid" "$floor_url" \
  --results "$results" "$@" || status=$?
if [ "$status" -ne 0 ]; then
  echo "== the daemon's log" >&2
  tail -n 20 "$work/ours.log" >&2
  echo "== the floor's log" >&2
  tail -n 20 "$work/floor.log" >&2
fi
echo "written to $results"
exit "$status"
