# The steps that run.sh and test.sh share; sourced by both. The caller sets
# `root`, the project's folder. Own lines go to standard error, so that the
# output of the program that is started stays clean.

build=$root/build/release
logs=$root/build/logs
export CCACHE_BASEDIR=$root
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime

say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }
die() { say "$*"; exit 1; }

# step NAME COMMAND...: runs the command with its output in a log, whose end is
# shown when it fails.
step() {
    local log=$logs/$1.log
    shift
    mkdir -p "$logs"
    if ! "$@" >"$log" 2>&1 </dev/null; then
        grep -n -m 10 -E 'error:|FAILED:|CMake Error|^E: ' "$log" >&2 || true
        tail -n 25 "$log" >&2
        die "stopped: '$*' failed; all it said is in $log"
    fi
}

# missing_packages KIND...: the packages of these kinds that are not installed.
missing_packages() {
    local kinds=" $* " kind package rest wanted=() installed
    while read -r kind package rest; do
        [[ $kinds == *" $kind "* ]] && wanted+=("$package")
    done <"$root/cmake/dependencies.txt"
    installed=" $(dpkg-query -W -f '${db:Status-Status}:${Package} ' "${wanted[@]}" 2>/dev/null || true)"
    for package in "${wanted[@]}"; do
        [[ $installed == *" installed:$package "* ]] || printf '%s ' "$package"
    done
}

# install_missing KIND...: installs what is missing of these kinds.
install_missing() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "no apt-get here: taking the packages of cmake/dependencies.txt as installed"
        return
    fi
    local missing as_root=()
    read -r -a missing <<<"$(missing_packages "$@")"
    [[ ${#missing[@]} -eq 0 ]] && return
    if [[ $(id -u) -ne 0 ]]; then
        command -v sudo >/dev/null ||
            die "stopped: not root and no sudo; have these packages installed: ${missing[*]}"
        as_root=(sudo)
    fi
    say "installing ${missing[*]}"
    step apt-update "${as_root[@]}" apt-get update
    step apt-install "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
}

# configure NAME=VALUE...: configures where that was not done yet, or with other values.
configure() {
    local setting needed=0
    [[ -f $build/build.ninja ]] || needed=1
    for setting in "$@"; do
        grep -q "^${setting%%=*}:[A-Z]*=${setting#*=}\$" "$build/CMakeCache.txt" 2>/dev/null || needed=1
    done
    [[ $needed -eq 0 ]] && return
    say "configuring in $build"
    step configure cmake -S "$root" --preset release "${@/#/-D}"
}

# build_targets TARGET...: says so only when it takes longer than a look at what is built.
build_targets() {
    local teller failed=0
    (read -r -t 1 <> <(:) || say "building in $build") &
    teller=$!
    (step build cmake --build "$build" --target "$@") || failed=1
    kill "$teller" 2>/dev/null || true
    wait "$teller" 2>/dev/null || true
    [[ $failed -eq 0 ]] || exit 1
}

# has_display: whether DISPLAY names an X server that is there.
has_display() {
    [[ -n ${DISPLAY:-} ]] || return 1
    [[ $DISPLAY =~ ^(unix)?:([0-9]+) ]] || return 0 # on another machine
    [[ -S /tmp/.X11-unix/X${BASH_REMATCH[2]} ]]
}

# start_display: an X server of our own, gone when the script ends.
start_display() {
    local number
    command -v Xvfb >/dev/null ||
        die "stopped: there is neither a display here nor Xvfb to start one; install the package xvfb"
    mkdir -p "$logs"
    exec {x_output}< <(exec Xvfb -displayfd 1 -screen 0 1600x1200x24 -nolisten tcp 2>"$logs/xvfb.log")
    x_pid=$!
    runtime=$(mktemp -d)
    trap 'kill "$x_pid" 2>/dev/null || true; rm -rf "$runtime"' EXIT
    if ! read -r -t 30 -u "$x_output" number; then
        tail -n 5 "$logs/xvfb.log" >&2
        die "stopped: Xvfb did not start; all it said is in $logs/xvfb.log"
    fi
    unset WAYLAND_DISPLAY
    export DISPLAY=:$number QT_QPA_PLATFORM=xcb
    export XDG_RUNTIME_DIR=${XDG_RUNTIME_DIR:-$runtime} # Qt says so on standard error when there is none
}
