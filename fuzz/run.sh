#!/usr/bin/env bash
# Runs the fuzz targets of fuzz/ (see fuzz/README.md):
#   fuzz/run.sh TARGET SECONDS    one target for SECONDS seconds
#   fuzz/run.sh all SECONDS       every target in turn, SECONDS seconds each
#   fuzz/run.sh list              the targets
# Builds the targets into build-fuzz/ first (clang, -DFUZZ=ON) when they are missing or out of date. Each run
# starts from a scratch copy of the target's committed corpus (fuzz/corpus/<target>/), so that the committed
# one does not grow; libFuzzer's log goes to build-fuzz/fuzz-logs/<target>.log. A finding (crash, leak,
# timeout, out of memory) fails the run: its reproducer is kept in build-fuzz/fuzz-findings/<target>/ and its
# path printed; replay it with build-fuzz/fuzz/<target> <reproducer>.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

# name, -max_len (larger inputs only slow a target down), dictionary (fuzz/dict/; "xml+" adds xml.dict).
targets=(
  "sinkctss_action 4096 -"
  "openhome_action 4096 -"
  "playlist_sequence 2048 -"
  "last_change 8192 xml+last_change"
  "media_metadata 8192 xml+media_metadata"
  "properties 4096 properties"
  "protocol_info 512 protocol_info"
  "convert_control_character 1024 -"
  "read_list 1024 read_list"
  "soap_request 16384 xml+soap_request"
  "playlist_file 16384 xml+playlist_file"
)

usage() {
  echo "usage: fuzz/run.sh TARGET|all SECONDS   (fuzz/run.sh list: the targets)" >&2
  exit 2
}

if [[ ${1:-} == list ]]; then
  for entry in "${targets[@]}"; do echo "${entry%% *}"; done
  exit 0
fi
[[ $# -eq 2 && $2 =~ ^[0-9]+$ && $2 -gt 0 ]] || usage
which=$1
seconds=$2
known=0
for entry in "${targets[@]}"; do
  [[ $which == all || $which == "${entry%% *}" ]] && known=1
done
[[ $known -eq 1 ]] || { echo "no fuzz target named '$which' (fuzz/run.sh list)" >&2; exit 2; }

build=$root/build-fuzz
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$root}
if [[ ! -f $build/build.ninja ]]; then
  echo "== configuring build-fuzz (clang, FUZZ=ON)"
  CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DFUZZ=ON >/dev/null
fi
echo "== building build-fuzz"
build_started=$SECONDS
if ! cmake --build "$build" -j"$(nproc)" >"$build/fuzz-build.log" 2>&1; then
  cat "$build/fuzz-build.log" >&2
  echo "the fuzz build failed" >&2
  exit 1
fi
echo "== built build-fuzz in $((SECONDS - build_started)) s"

# Leaks are findings; a sanitizer report ends the run with its stack.
export ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"

mkdir -p "$build/fuzz-logs"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# run_target NAME MAX_LEN DICTIONARY: 0 when the run found nothing.
run_target() {
  local name=$1 maxLength=$2 dictionary=$3
  local corpus=$scratch/$name findings=$build/fuzz-findings/$name log=$build/fuzz-logs/$name.log
  rm -rf "$corpus" "$findings"
  mkdir -p "$corpus" "$findings"
  cp -R "fuzz/corpus/$name/." "$corpus/"
  local options=(-max_total_time="$seconds" -max_len="$maxLength" -timeout=20 -rss_limit_mb=2560
                 -print_final_stats=1 -artifact_prefix="$findings/")
  if [[ $dictionary != - ]]; then
    local words=$scratch/$name.dict
    : >"$words"
    if [[ $dictionary == xml+* ]]; then
      cat fuzz/dict/xml.dict >>"$words"
      dictionary=${dictionary#xml+}
    fi
    cat "fuzz/dict/$dictionary.dict" >>"$words"
    options+=(-dict="$words")
  fi
  local status=0
  # From the scratch folder, so that nothing a target writes lands in the tree.
  (cd "$scratch" && "$build/fuzz/$name" "${options[@]}" "$corpus") >"$log" 2>&1 || status=$?
  local runs speed
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  local reproducers
  reproducers=$(find "$findings" -type f | sort)
  if [[ $status -ne 0 || -n $reproducers ]]; then
    echo "FAIL  $name after ${runs:-?} runs (exit $status); log: $log"
    grep -E 'ERROR|invariant broken|SUMMARY' "$log" | head -5 | sed 's/^/      /'
    for reproducer in $reproducers; do echo "      reproducer: $reproducer"; done
    return 1
  fi
  rm -rf "$findings"
  printf 'ok    %-26s %9s runs in %ss (%s/s), corpus %s -> %s inputs\n' "$name" "${runs:-?}" "$seconds" \
    "${speed:-?}" "$(find "fuzz/corpus/$name" -type f | wc -l)" "$(find "$corpus" -type f | wc -l)"
}

failed=0
for entry in "${targets[@]}"; do
  read -r name maxLength dictionary <<<"$entry"
  [[ $which == all || $which == "$name" ]] || continue
  run_target "$name" "$maxLength" "$dictionary" || failed=1
done
exit $failed
