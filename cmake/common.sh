# Shared by run.sh, test.sh and .ci/run: the Debian packages that each needs, and how to get them.

runPackages=(g++ cmake ninja-build ccache libexpat1 libexpat1-dev libboost-dev rapidjson-dev libcli11-dev)
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

# The oldest Expat that may read resource files: the security update of Debian 12. To CMake and
# pkg-config all of Debian's updates are 2.5.0, only dpkg tells them apart.
oldestExpat=2.5.0-1+deb12u5

# Prints those of the given packages that are older than that.
findOutdated() {
  local package version
  for package in "$@"; do
    [[ $package == libexpat1* ]] || continue
    version=$(dpkg-query -W -f '${Version}' "$package" 2>/dev/null) || continue
    ! dpkg --compare-versions "$version" lt "$oldestExpat" || echo "$package"
  done
}

# Installs those of the given packages that are missing or outdated. What is only outdated, and
# cannot be brought up to date, is told and taken as it is, but not with CI=true. Where there is no
# dpkg, the build itself tells what it does not find.
installPackages() {
  command -v dpkg-query >/dev/null || return 0

  local installed package missing=() outdated=()
  installed=$(dpkg-query -W -f '${db:Status-Abbrev}${Package} ' "$@" 2>/dev/null || true)
  for package in "$@"; do
    [[ " $installed" == *"i $package "* ]] || missing+=("$package")
  done
  mapfile -t outdated < <(findOutdated "$@")

  [[ ${#missing[@]} -eq 0 ]] || runAptGet "${missing[@]}" "${outdated[@]}" ||
    fail "could not install ${missing[*]}"
  [[ ${#missing[@]} -gt 0 || ${#outdated[@]} -eq 0 ]] || runAptGet "${outdated[@]}" || true

  mapfile -t outdated < <(findOutdated "$@")
  [[ ${#outdated[@]} -gt 0 ]] || return 0
  local message="${outdated[*]} should be $oldestExpat or later"
  [[ ${CI:-} != true ]] || fail "$message"
  echo "${0##*/}: warning: $message" >&2
}

runAptGet() {
  local asRoot=()
  if [[ $EUID -ne 0 ]]; then
    command -v sudo >/dev/null || { echo "${0##*/}: needs root to install: $*" >&2; return 1; }
    asRoot=(sudo)
  fi
  echo "${0##*/}: installing $*" >&2
  local aptGet=("${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get
    -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3)
  quietly "${aptGet[@]}" update && quietly "${aptGet[@]}" install -y --no-install-recommends "$@"
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
