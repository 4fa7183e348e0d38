#!/usr/bin/env bash
# ./test.sh [CTEST ARGS]: installs what is missing, builds everything with
# warnings as errors, and runs every test, on an X server of its own where
# there is no display. ARGS go to ctest, e.g. -L unit or -R install.
set -euo pipefail
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
. "$root/cmake/steps.sh"

install_missing run tests
configure V3D_BUILD_TESTS=ON V3D_BUILD_VIEWER=ON V3D_WERROR=ON
build_targets all

has_display || start_display
rm -rf "$build/test-output"
say "running the tests; pictures of failing ones go to $build/test-output"
status=0
ctest --test-dir "$build" --output-on-failure --no-tests=error -j2 "$@" || status=$?
exit "$status"
