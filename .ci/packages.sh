#!/usr/bin/env bash
# Makes the Debian packages of the release build, which must exist, and proves what is in them.
# Installs nothing: the packages are unpacked into a temporary folder.
set -euo pipefail

cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.."
source cmake/common.sh

packages=build/release/packages
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Package and one of its files, as a pattern.
contents=(
  'libkorvat     usr/lib/libkorvat.so.+([0-9]).+([0-9])'
  'libkorvat     usr/share/korvat/0000000000000000-0/nvs.xml'
  'libkorvat-dev usr/lib/libkorvat.so'
  'libkorvat-dev usr/lib/pkgconfig/korvat.pc'
  'libkorvat-dev usr/lib/cmake/korvat/korvatConfig.cmake'
  'libkorvat-dev usr/include/korvat/types/TypeManager.h'
  'libkorvat-dev usr/share/man/man3/libkorvat.3.gz'
  'korvat        usr/bin/korvat'
  'korvat        usr/share/bash-completion/completions/korvat'
  'korvat        usr/share/zsh/vendor-completions/_korvat'
  'korvat        usr/share/fish/vendor_completions.d/korvat.fish'
  'korvat        usr/share/man/man1/korvat.1.gz'
  'korvat        usr/share/man/man5/korvat-catalogue.5.gz'
)

# Package and what stands in its field Depends, @ for its own version.
dependencies=(
  'libkorvat     libexpat1'
  'libkorvat     libstdc++6'
  'libkorvat-dev libkorvat (= @)'
  'libkorvat-dev libboost-dev (>= 1.74)'
  'korvat        libkorvat (= @)'
  'korvat        libstdc++6'
)

makePackages() {
  rm -rf "$packages"
  quietly cpack --config build/release/CPackConfig.cmake || fail "cpack failed"
  local found name
  found=$(cd "$packages" && echo *.deb)
  for name in korvat libkorvat-dev libkorvat; do
    [[ " $found" == *" ${name}_"* ]] || fail "there is no package $name, only $found"
    mkdir "$folder/$name"
    dpkg-deb --extract "$packages/${name}"_*.deb "$folder/$name"
  done
}

checkContents() {
  local row name pattern twice
  shopt -s extglob nullglob
  for row in "${contents[@]}"; do
    read -r name pattern <<<"$row"
    local found=("$folder/$name"/$pattern)
    [[ ${#found[@]} -gt 0 && -e ${found[0]} || -L ${found[0]} ]] || fail "$name has no $pattern"
  done
  twice=$(cd "$folder" && find . -mindepth 2 ! -type d | cut -d/ -f3- | sort | uniq -d)
  [[ -z $twice ]] || fail "in more than one package: $twice"
}

checkFields() {
  local row name text version depends
  for row in "${dependencies[@]}"; do
    read -r name text <<<"$row"
    version=$(dpkg-deb --field "$packages/${name}"_*.deb Version)
    depends=$(dpkg-deb --field "$packages/${name}"_*.deb Depends)
    [[ $depends == *"${text/@/$version}"* ]] || fail "$name does not depend on $text, but on $depends"
  done
  text=$(build/release/bin/korvat --version)
  [[ $text == "korvat $version" ]] || fail "the packages have the version $version, not that of $text"
}

# The program needs its own package and that of the library, and reads the catalogue in there.
checkProgram() {
  local output root=$folder/root
  mkdir "$root"
  dpkg-deb --extract "$packages"/libkorvat_*.deb "$root"
  dpkg-deb --extract "$packages"/korvat_*.deb "$root"
  output=$("$root/usr/bin/korvat" decode SNVT_switch C801) || fail "the packed program failed"
  [[ $output == '{"value":100.0,"state":1}' ]] || fail "the packed program printed: $output"
  output=$("$root/usr/bin/korvat" decode SNVT_none 00 2>&1) || true
  [[ $output == *"$root/usr/share/korvat"* ]] || fail "it reads another catalogue: $output"
}

makePackages
checkContents
checkFields
checkProgram
echo "$(cd "$packages" && echo *.deb) hold what they have to"
