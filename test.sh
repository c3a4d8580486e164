#!/usr/bin/env bash
# Builds everything with its tests and runs them all. With CI=true, warnings are errors. Arguments
# go to the configuration.
set -euo pipefail

cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")"
source cmake/common.sh

installPackages "${testPackages[@]}"

warningsAreErrors=OFF
[[ ${CI:-} != true ]] || warningsAreErrors=ON
echo "building the tests (preset debug)"
buildPreset debug -DKORVAT_WERROR=$warningsAreErrors "$@"
echo "running the tests"
testPreset debug
