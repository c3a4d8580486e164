#!/usr/bin/env bash
# Runs a fuzz target for a while: fuzz/run.sh format [SECONDS]. What it finds stays in
# build/fuzz/findings/TARGET; a finding that was fixed becomes a row of a test.
set -euo pipefail

cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.."
source cmake/common.sh

target=${1:?usage: fuzz/run.sh TARGET [SECONDS]}
seconds=${2:-60}
corpus=build/fuzz/corpus/$target
findings=build/fuzz/findings/$target

# One file for each line of a text.
splitLines() {
  local line number=0
  while IFS= read -r line; do
    number=$((number + 1))
    printf '%s' "$line" >"$corpus/seed-$number"
  done <"$1"
}

installPackages "${fuzzPackages[@]}"
buildPreset fuzz
mkdir -p "$corpus" "$findings"
case $target in
  format) splitLines tests/data/formats.txt ;;
  *) fail "unknown target '$target'; expected format" ;;
esac
exec "build/fuzz/bin/fuzz_$target" "$corpus" -dict="fuzz/$target.dict" \
  -artifact_prefix="$findings/" -max_total_time="$seconds" -timeout=2 -rss_limit_mb=1024 \
  -print_final_stats=1
