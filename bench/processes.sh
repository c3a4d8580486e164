#!/usr/bin/env bash
# Times whole processes of korvat beside other programs:
#   bench/processes.sh KORVAT STREAM_BASELINE [RECORDS]
# with the paths of an installed korvat and of build/release/bin/korvat_stream_baseline.
# Prints case, korvat, baseline and their ratio; times are medians of 9 runs in turn. "10 x records" has
# korvat itself with a tenth of the records as its baseline. Then the peak memory of both lengths. Needs
# protoc for one case, and Python for the memory.
set -euo pipefail

korvat=$(realpath "$1")
baseline=$(realpath "$2")
records=${3:-1000000}
readonly runs=9
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# Five types in turn, the values within their limits.
awk -v records="$records" 'BEGIN {
  for (i = 0; i < records; ++i) {
    kind = i % 5
    type = "SNVT_count"; raw = sprintf("%04X", i % 65536)
    if (kind == 1) { type = "SNVT_switch"; raw = sprintf("%02X%02X", i % 201, i % 2) }
    if (kind == 2) { type = "SNVT_temp_p"; raw = sprintf("%04X", i % 32767) }
    if (kind == 3) { type = "SNVT_date_day"; raw = sprintf("%02X", i % 7) }
    if (kind == 4) {
      type = "SNVT_hvac_status"
      n = i % 20000
      raw = sprintf("%02X%04X%04X%04X%04X%04X%02X", i % 5, n, n + 1, n + 2, n + 3, n + 4, 0)
    }
    printf "{\"n\":%d,\"type\":\"%s\",\"raw\":\"%s\"}\n", i, type, raw
  }
}' > raw.json
"$korvat" decode --stream < raw.json > values.json
# Both sides give what they should.
"$korvat" encode --stream < values.json > out.json
cmp out.json values.json
"$baseline" < raw.json > out.json
cmp out.json raw.json

cat > switch.proto <<'PROTO'
syntax = "proto3";
message Switch {
  float value = 1;
  int32 state = 2;
}
PROTO
printf '\x0d\x00\x00\xc8\x42\x10\x01' > switch.bin

decodeToFile() { "$korvat" decode --stream < raw.json > out.json; }
parseToFile() { "$baseline" < raw.json > out.json; }
decodeToPipe() { "$korvat" decode --stream < raw.json | cat > out.json; }
parseToPipe() { "$baseline" < raw.json | cat > out.json; }
encodeToFile() { "$korvat" encode --stream < values.json > out.json; }
parseValuesToFile() { "$baseline" < values.json > out.json; }
encodeToPipe() { "$korvat" encode --stream < values.json | cat > out.json; }
parseValuesToPipe() { "$baseline" < values.json | cat > out.json; }
head -n "$((records / 10))" raw.json > raw10.json
head -n "$((records / 10))" values.json > values10.json
decodeTenth() { "$korvat" decode --stream < raw10.json > out10.json; }
encodeTenth() { "$korvat" encode --stream < values10.json > out10.json; }
decodeOne() { "$korvat" decode SNVT_switch C801 > out.json; }
decodeOneMessage() { protoc --decode=Switch switch.proto < switch.bin > out.json; }

# Microseconds of one run.
timeOf() {
  local begin=$EPOCHREALTIME
  "$1"
  local end=$EPOCHREALTIME
  echo $((${end/[.,]/} - ${begin/[.,]/}))
}

median() { sort -n "$1" | sed -n "$(((runs + 1) / 2))p"; }

compare() {
  : > own.txt
  : > other.txt
  for ((run = 0; run < runs; ++run)); do
    timeOf "$2" >> own.txt
    timeOf "$3" >> other.txt
  done
  awk -v name="$1" -v own="$(median own.txt)" -v other="$(median other.txt)" \
    'BEGIN { printf "| %s | %.1f ms | %.1f ms | %.2f |\n", name, own / 1e3, other / 1e3, own / other }'
}

echo "| Case | korvat | baseline | ratio |"
echo "|---|---:|---:|---:|"
compare "decode --stream to a file" decodeToFile parseToFile
compare "decode --stream into a pipe" decodeToPipe parseToPipe
compare "encode --stream to a file" encodeToFile parseValuesToFile
compare "encode --stream into a pipe" encodeToPipe parseValuesToPipe
compare "10 x records, decode --stream" decodeToFile decodeTenth
compare "10 x records, encode --stream" encodeToFile encodeTenth
if command -v protoc > /dev/null; then
  compare "decode one value" decodeOne decodeOneMessage
fi

# MiB that a stream command took at most.
peakOf() {
  python3 -c '
import resource, subprocess, sys
subprocess.run([sys.argv[1], sys.argv[2], "--stream"], stdin=open(sys.argv[3]), stdout=subprocess.DEVNULL, check=True)
print("%.1f" % (resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024))' "$korvat" "$1" "$2"
}

echo
echo "| Peak memory, MiB | $records records | $((records / 10)) records |"
echo "|---|---:|---:|"
echo "| decode --stream | $(peakOf decode raw.json) | $(peakOf decode raw10.json) |"
echo "| encode --stream | $(peakOf encode values.json) | $(peakOf encode values10.json) |"
