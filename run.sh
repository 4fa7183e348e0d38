#!/usr/bin/env bash
# ./run.sh [ARGS]: installs what is missing, builds, and starts viewer3d ARGS.
# Without arguments: the sample project, in a window, or where there is no
# display as the picture viewer3d.png in the current folder.
set -euo pipefail
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
. "$root/cmake/steps.sh"

# Files without a command open in a window, which nobody would see on an X server of our own.
if [[ ! ${1:-} =~ ^(render|depth|select|export|info|plugins)$ ]] && ! has_display; then
    for argument in "$@"; do
        [[ ! -e $argument ]] ||
            die "no display here to open a window on; './run.sh render FILES... -o OUT.png' makes a picture"
    done
fi

install_missing run
[[ -f $build/build.ninja ]] || configure V3D_BUILD_TESTS=OFF V3D_WERROR=ON
build_targets viewer3d Viewer3dModule readers

viewer=$build/bin/viewer3d
sample=("$root"/samples/town/*.{ply,obj,geojson} --labels street)
picture=
if [[ $# -eq 0 ]]; then
    set -- "${sample[@]}"
    if ! has_display; then
        picture=$PWD/viewer3d.png
        set -- render "${sample[@]}" -o "$picture"
        say "no display here: rendering the sample project to a picture"
    fi
fi
if has_display; then
    exec "$viewer" "$@"
fi
start_display
status=0
"$viewer" "$@" || status=$?
if [[ -n $picture && $status -eq 0 ]]; then
    say "the picture lies in $picture"
fi
exit "$status"
