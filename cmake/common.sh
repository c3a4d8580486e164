# Shared by run.sh, test.sh and .ci/run: the Debian packages that each needs, and how to get them.

runPackages=(g++ cmake ninja-build ccache libexpat1-dev libboost-dev rapidjson-dev libcli11-dev)
testPackages=("${runPackages[@]}" libgtest-dev libgmock-dev python3 python3-jsonschema zsh fish)
fuzzPackages=("${runPackages[@]}" clang libclang-rt-14-dev llvm-14)
ciPackages=("${testPackages[@]}" git libbenchmark-dev clang libclang-rt-14-dev llvm-14
  clang-format clang-tidy cppcheck valgrind gcovr pkgconf dpkg-dev mandoc doxygen)

fail() {
  echo "${0##*/}: $*" >&2
  exit 4
}

# Runs a command without a word; when it fails, its output goes to standard error.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 </dev/null || status=$?
  [[ $status -eq 0 ]] || cat "$log" >&2
  rm -f "$log"
  return $status
}

# Installs those of the given packages that are missing. Where there is no dpkg, the build itself
# tells what it does not find.
installPackages() {
  command -v dpkg-query >/dev/null || return 0

  local installed package missing=() asRoot=()
  installed=$(dpkg-query -W -f '${db:Status-Abbrev}${Package} ' "$@" 2>/dev/null || true)
  for package in "$@"; do
    [[ " $installed" == *"i $package "* ]] || missing+=("$package")
  done
  [[ ${#missing[@]} -gt 0 ]] || return 0

  if [[ $EUID -ne 0 ]]; then
    command -v sudo >/dev/null || fail "needs root to install: ${missing[*]}"
    asRoot=(sudo)
  fi
  echo "${0##*/}: installing ${missing[*]}" >&2
  local aptGet=("${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get
    -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3)
  quietly "${aptGet[@]}" update || fail "apt-get update failed"
  quietly "${aptGet[@]}" install -y --no-install-recommends "${missing[@]}" ||
    fail "could not install ${missing[*]}"
}

# Configures and builds a preset; further arguments go to the configuration.
buildPreset() {
  local preset=$1
  shift
  quietly cmake --preset "$preset" "$@" || fail "could not configure the preset $preset"
  quietly cmake --build --preset "$preset" || fail "could not build the preset $preset"
}

# Runs the tests of a preset: prints the summaries, and, when a test fails, all there is to know.
testPreset() {
  local preset=$1 log status=0
  log=$(mktemp)
  ctest --preset "$preset" --verbose -j "$(nproc)" >"$log" 2>&1 </dev/null || status=$?
  if [[ $status -eq 0 ]]; then
    grep -E '^[0-9]+: \[(=+|  PASSED  )\]|tests passed|^Total Test time' "$log"
  else
    cat "$log"
  fi
  rm -f "$log"
  return $status
}
