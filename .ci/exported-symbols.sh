#!/usr/bin/env bash
# Compares what libkorvat.so of the release build offers with cmake/exported-symbols.txt, so that
# nothing appears or goes unnoticed. With --update, writes the list anew.
set -euo pipefail

cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.."
source cmake/common.sh

library=build/release/lib/libkorvat.so
list=cmake/exported-symbols.txt

# Functions, data, virtual tables and type information of the namespace zavri. Templates of other
# libraries, instantiated with our types, come and go with the compiler. One name stands for all the
# variants of a constructor.
exportedSymbols() {
  nm -D --defined-only "$library" | awk '{print $3}' |
    grep -E '^_Z(T[VIS])?NK?5zavri' | c++filt | LC_ALL=C sort -u
}

[[ -e $library ]] || fail "there is no $library; build the preset release first"
if [[ ${1:-} == --update ]]; then
  exportedSymbols >"$list"
  exit
fi

exportedSymbols | diff -u --label "$list" "$list" --label "$library" - ||
  fail "the library offers something else than $list says (- gone, + new);" \
    "if that is meant: .ci/exported-symbols.sh --update"
echo "the library offers the $(wc -l <"$list") symbols of $list"
