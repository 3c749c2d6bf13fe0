#!/usr/bin/env bash
# Sets up, builds and runs every test:
#   1. the plain build and the whole suite;
#   2. the whole suite again under AddressSanitizer + UndefinedBehaviorSanitizer (LeakSanitizer included);
#   3. every fuzz target (fuzz/run.sh) for FUZZ_SECONDS seconds each (default 15), built by clang under the
#      same sanitizers; a crash, leak or timeout fails the run and its reproducer is printed;
#   4. the threaded tests (label "threads") under ThreadSanitizer.
# A sanitizer report fails the run. Build trees: build/, build-asan/, build-fuzz/, build-tsan/.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh

jobs=$(nproc)
# Paths relative to the checkout in ccache's keys, so that another clone of the tree reuses its objects.
export CCACHE_BASEDIR="$PWD"
export ASAN_OPTIONS="abort_on_error=1:detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1"

build() {
  local directory=$1
  shift
  echo "== configuring ${directory} $*"
  cmake -S . -B "$directory" -G Ninja "$@" >/dev/null
  echo "== building ${directory}"
  cmake --build "$directory" -j"$jobs"
}

run_tests() {
  local directory=$1
  shift
  echo "== testing ${directory} $*"
  ctest --test-dir "$directory" --output-on-failure --no-tests=error -j"$jobs" --timeout 120 "$@"
}

build build
run_tests build

build build-asan -DSANITIZER=address
run_tests build-asan

echo "== fuzzing build-fuzz, ${FUZZ_SECONDS:-15} s a target"
fuzz_started=$SECONDS
fuzz/run.sh all "${FUZZ_SECONDS:-15}"
echo "== fuzzing took $((SECONDS - fuzz_started)) s"

build build-tsan -DSANITIZER=thread
# ThreadSanitizer needs a memory layout that high-entropy address randomisation can break; without
# randomisation it has one in every case.
setarch "$(uname -m)" -R true 2>/dev/null && tsan_prefix=(setarch "$(uname -m)" -R) || tsan_prefix=()
echo "== testing build-tsan -L threads"
"${tsan_prefix[@]}" ctest --test-dir build-tsan --output-on-failure --no-tests=error -j"$jobs" --timeout 120 -L threads

echo "== all tests passed"
