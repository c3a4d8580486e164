#!/usr/bin/env bash
# Runs fuzz targets: fuzz/run.sh TARGET|all [SECONDS], each for that long (60), as many at a time as there
# are cores; or damages resource files: fuzz/run.sh mutate [FILES] [SEED]. The first inputs of a target are
# those of fuzz/findings/TARGET, which failed once, then come those of fuzz/corpus/TARGET and the seeds
# that are made of the catalogue. What a run adds to its corpus stays in build/fuzz/corpus/TARGET, what
# it finds in build/fuzz/findings/TARGET: once it is fixed, the input moves to fuzz/findings/TARGET.
# FUZZ_PRESET names another preset than "fuzz" to build and run.
set -euo pipefail

cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.."
source cmake/common.sh

preset=${FUZZ_PRESET:-fuzz}
build=build/$preset

# name, bytes of the longest input, dictionary
targets="
  format 256 format.dict
  typeid 48 -
  rawtojson 48 -
  jsontoraw 160 json.dict
  packet 48 -
  member 64 -
  stream 200 json.dict
  enums 320 xml.dict
  nvs 420 xml.dict
  cps 400 xml.dict
  fps 500 xml.dict
"

runTarget() {
  local target=$1 maxSize=$2 dictionary=$3 seconds=$4
  local corpus=$build/corpus/$target findings=$build/findings/$target
  local options=(-max_len="$maxSize" -timeout=10 -rss_limit_mb=2048 -entropic=0
    -artifact_prefix="$findings/" -print_final_stats=1)
  [[ $dictionary == - ]] || options+=(-dict="fuzz/$dictionary")
  mkdir -p "$corpus" "$findings"

  local known
  known=$(find fuzz/findings/"$target" -type f 2>/dev/null || true)
  if [[ -n $known ]]; then
    # Files one by one run as they are, whatever their size.
    mapfile -t known <<<"$known"
    "$build/bin/fuzz_$target" -timeout=10 "${known[@]}" || return 1
  fi
  local stored=()
  [[ ! -d fuzz/corpus/$target ]] || stored=("fuzz/corpus/$target")
  "$build/bin/fuzz_$target" "${options[@]}" -max_total_time="$seconds" \
    "$corpus" "${stored[@]}" "$build/seeds/$target"
}

# One file for each line of a text.
splitLines() {
  local line number=0
  mkdir -p "$2"
  while IFS= read -r line; do
    number=$((number + 1))
    printf '%s' "$line" >"$2/seed-$number"
  done <"$1"
}

wanted=${1:?usage: fuzz/run.sh TARGET|all [SECONDS] | mutate [FILES] [SEED]}
seconds=${2:-60}
[[ $wanted == all || $wanted == mutate || $targets == *"  $wanted "* ]] ||
  fail "unknown target '$wanted'; expected all, mutate or one of: $(awk '{print $1}' <<<"$targets" | xargs)"

installPackages "${fuzzPackages[@]}"
buildPreset "$preset" -DKORVAT_BUILD_FUZZ=ON
"$build/bin/fuzz_seeds" "$build/seeds"
splitLines tests/data/formats.txt "$build/seeds/format"

# Shorter stacks of allocations and a smaller quarantine: more inputs a second.
export ASAN_OPTIONS=malloc_context_size=4:quarantine_size_mb=64:${ASAN_OPTIONS:-}
export UBSAN_OPTIONS=print_stacktrace=1:${UBSAN_OPTIONS:-}
# In a folder of its own: it keeps what it finds in the current one.
mutateFiles() {
  local findings=$build/findings/mutate
  mkdir -p "$findings"
  (cd "$findings" && ../../bin/fuzz_mutate "$1" "$2")
}

if [[ $wanted == mutate ]]; then
  mutateFiles "${2:-20000}" "${3:-1}"
  exit
fi
# Shows what a target printed only when it found something.
watchTarget() {
  local log=$build/fuzz_$1.log
  if runTarget "$@" >"$log" 2>&1; then
    echo "$1: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") executions, nothing found"
  else
    cat "$log"
    fail "the target $1 found something"
  fi
}

isFailed=
while read -r target maxSize dictionary; do
  [[ -n $target && ($wanted == all || $wanted == "$target") ]] || continue
  [[ $(jobs -r | wc -l) -lt $(nproc) ]] || wait -n || isFailed=yes
  watchTarget "$target" "$maxSize" "$dictionary" "$seconds" &
done <<<"$targets"
for job in $(jobs -p); do wait "$job" || isFailed=yes; done
[[ -z $isFailed ]]
