#!/usr/bin/env bash
# ./benchmark.sh [--quick] [--filter REGEX] [--check | --write | --alone ours|plain]: measures the scene beside
# hand-written OpenGL that does the same, and prints a line for each workload and size. --quick: fewer sizes and runs,
# two minutes in all; --filter: those whose names, such as B1/1000, match in a part; --check: fails, naming it, where
# something is more than a tenth above what docs/performance.md records, and where nothing that runs is recorded;
# --write: records a whole run there; --alone: one of the two sides only, for a profiler.
set -euo pipefail
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
. "$root/cmake/steps.sh"

wrong() { say "$*"; exit 2; }

arguments=("$@")
while [[ $# -gt 0 ]]; do
    case $1 in
        --quick | --check | --write) shift ;;
        --filter | --alone) [[ $# -ge 2 ]] || wrong "$1 needs a value"; shift 2 ;;
        -h | --help) sed -n '2,/^set /{/^#/s/^# \?//p}' "${BASH_SOURCE[0]}"; exit 0 ;;
        *) wrong "unknown option '$1'; there are --quick, --filter REGEX, --check, --write and --alone" ;;
    esac
done

install_missing run benchmarks
[[ -f $build/build.ninja ]] || configure V3D_BUILD_TESTS=OFF V3D_WERROR=ON
configure V3D_BUILD_BENCHMARKS=ON
build_targets viewer3d_benchmarks

commit=$(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo unknown)
git -C "$root" diff --quiet HEAD -- framework Viewer3dModule benchmarks 2>/dev/null || commit="$commit with changes"

# On a server of our own also where there is a display: what is measured is the driver, not what else the screen shows.
start_display
status=0
"$build/bin/viewer3d_benchmarks" --document "$root/docs/performance.md" --commit "$commit" "${arguments[@]}" || status=$?
exit "$status"
