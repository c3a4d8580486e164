#!/usr/bin/env bash
# Runs the program korvat with the given arguments, after installing and building what is missing.
# Leaves standard output to the program; exits 4 when there is no program to run.
set -euo pipefail

root=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
source "$root/cmake/common.sh"

program=$root/build/release/bin/korvat
stamp=$root/build/release/built.stamp  # as old as the start of the last build that went through

isBuilt() {
  [[ -x $program && -e $stamp ]] || return 1
  local newer
  newer=$(find "$root"/{CMakeLists.txt,CMakePresets.json,cmake,korvat,tool} -newer "$stamp" -print -quit)
  [[ -z $newer ]]
}

build() {
  mkdir -p "$root/build/release"
  exec 9>"$root/build/release/built.lock"
  flock 9
  if ! isBuilt; then  # another run may have built it meanwhile
    touch "$stamp.next"
    (cd "$root" && buildPreset release)
    [[ -x $program ]] || fail "the build left no program at $program"
    mv "$stamp.next" "$stamp"
  fi
  exec 9>&-
}

if isBuilt; then
  installPackages libexpat1  # all that a built program needs
else
  installPackages "${runPackages[@]}"
  build
fi
exec "$program" "$@"
