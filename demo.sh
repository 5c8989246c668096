#!/bin/sh
# Shows the main job on a real machine that is thrown away afterwards: installs what the build needs, builds
# the installer and a sample server, and opens the installer for whoever sits at the terminal. Without a
# terminal, or when asked to, runs the unattended story with systemd and with SysV init instead.
#
#   ./demo.sh [systemd | sysv | --unattended]
set -eu
cd "$(dirname "$0")"

kind=${1-systemd}
case $kind in
    systemd | sysv) [ -t 0 ] && [ -t 1 ] || kind=--unattended ;;
    --unattended) ;;
    *)
        echo "Usage: $0 [systemd | sysv | --unattended]" >&2
        exit 2
        ;;
esac

tools/install_packages.sh build demo
cmake --preset release >/dev/null
cmake --build --preset release --target payload_current payload_next >build/release/build.log 2>&1 || {
    tail -40 build/release/build.log >&2
    exit 1
}

# story KIND SCRIPT [OPTION...]
story() {
    story_kind=$1 script=$2
    shift 2
    testkit/machine "$story_kind" "$@" -- "$PWD/samples/story/$script" \
        "$PWD/build/release/payload/current" "$PWD/build/release/payload/next"
}

if [ "$kind" = --unattended ]; then
    story systemd unattended.sh --timeout 300
    story sysv unattended.sh --timeout 300
else
    story "$kind" interactive.sh
fi
