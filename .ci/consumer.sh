#!/usr/bin/env bash
# Installs the release build, which must exist, into a temporary prefix and proves what is there:
# the program with its catalogue, and the library for a project that finds it through CMake or
# through pkg-config and for the examples, all in another place than the one it was installed to.
set -euo pipefail

cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.."
source cmake/common.sh

expected='{"value":100.0,"state":1}'
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
prefix=$folder/moved

expect() {
  local what=$1 output
  shift
  output=$("$@") || fail "$what failed"
  [[ $output == "$expected" ]] || fail "$what printed: $output"
}

installRelease() {
  quietly cmake --install build/release --prefix "$folder/first" || fail "could not install"
  mv "$folder/first" "$prefix"
}

# The message about an unknown type tells which catalogue was read: not that of the source tree.
checkProgram() {
  local messages
  expect "the installed program" "$prefix/bin/korvat" decode SNVT_switch C801
  messages=$("$prefix/bin/korvat" decode SNVT_none 00 2>&1) || true
  [[ $messages == *"$prefix/share/korvat"* ]] || fail "it reads another catalogue: $messages"
}

# A header that offers something is installed, and all that are installed can be included.
checkHeaders() {
  local header
  for header in $(grep -l KORVAT_API korvat/*/*.h); do
    [[ -e $prefix/include/$header ]] || fail "$header is public, but not installed"
  done
  (cd "$prefix/include" && printf '#include "%s"\n' korvat/*/*.h) >"$folder/all.cpp"
  quietly g++ -std=c++20 -Wall -Wextra -Werror -fsyntax-only $flags "$folder/all.cpp" ||
    fail "the installed headers do not compile"
}

checkPkgConfig() {
  local catalog
  catalog=$(pkg-config --variable=catalog korvat)
  quietly g++ -std=c++20 "-DCATALOG_DIR=\"$catalog\"" $flags tests/install/main.cpp \
    $(pkg-config --libs korvat) -Wl,-rpath,"$(pkg-config --variable=libdir korvat)" \
    -o "$folder/consumer" || fail "the consumer does not build with pkg-config"
  expect "the consumer built with pkg-config" "$folder/consumer"
}

checkCMake() {
  quietly cmake -G Ninja -S tests/install -B "$folder/build" -DCMAKE_PREFIX_PATH="$prefix" ||
    fail "CMake does not find the installed library"
  quietly cmake --build "$folder/build" || fail "the consumer does not build with CMake"
  expect "the consumer built with CMake" "$folder/build/consumer"
}

# The programs of the documentation: public headers have to be enough for them.
checkExamples() {
  quietly cmake -G Ninja -S examples -B "$folder/examples" -DCMAKE_PREFIX_PATH="$prefix" ||
    fail "the examples do not find the installed library"
  quietly cmake --build "$folder/examples" || fail "the examples do not build"
  quietly ctest --test-dir "$folder/examples" --no-tests=error --output-on-failure ||
    fail "the examples print something else"
}

installRelease
checkProgram
pkgConfigFile=$(find "$prefix" -name korvat.pc)
export PKG_CONFIG_PATH=${pkgConfigFile%/*}
flags=$(pkg-config --cflags korvat)
checkHeaders
checkPkgConfig
checkCMake
checkExamples
echo "the installed program and both consumers print $expected; the examples run"
