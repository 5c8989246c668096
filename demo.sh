#!/bin/sh
# Shows the main job on a real machine that is thrown away afterwards: installs what the build needs, builds
# the installer and a sample server, and runs the unattended installation story with systemd and without.
#
#   ./demo.sh [--unattended]
set -eu
cd "$(dirname "$0")"

case ${1-} in
    '' | --unattended) ;;
    *)
        echo "Usage: $0 [--unattended]" >&2
        exit 2
        ;;
esac

tools/install_packages.sh build demo
cmake --preset release >/dev/null
cmake --build --preset release --target payload_current payload_next >build/release/build.log 2>&1 || {
    tail -40 build/release/build.log >&2
    exit 1
}

for kind in systemd sysv; do
    tests/machine/machine "$kind" --timeout 300 -- \
        "$PWD/samples/story/unattended.sh" "$PWD/build/release/payload/current" "$PWD/build/release/payload/next"
done
