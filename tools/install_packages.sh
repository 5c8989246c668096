#!/bin/bash
# Installs the Debian packages that a job of this project needs and that are missing.
#
#   tools/install_packages.sh GROUP...        GROUP: build, check, demo, bench, release, soak
#   tools/install_packages.sh --list GROUP... prints the packages, one a line, and installs nothing
#
# Silent, fast and offline when every package is there. Exit status: 0 everything is there, 1 packages are
# missing and could not be installed, 2 bad usage. KALMO_SKIP_PACKAGES=1 skips all of it, for a machine whose
# tools came another way.
set -euo pipefail

# What a package is here for stands beside it. The lists name only what a Debian 12 does not always carry.
COMPILE=(
    g++ cmake ninja-build
    zlib1g-dev                 # inflate and crc32 of the archive reader
    libisal-dev                # the faster ones
    nasm make dpkg-dev         # build them as a static library: tools/build_isal.sh
    nlohmann-json3-dev         # what programs are told
    libncurses-dev             # the wide-character curses of the screen
    ncurses-term               # descriptions of terminals, some of which the program carries
    libgtest-dev libgmock-dev  # the test programs are part of the build
    libvterm-dev               # the terminal emulator through which they look at the screen
    zip                        # the build packs the sample payloads
)
MACHINE=( # the throwaway machine of testkit/
    systemd systemd-sysv systemd-container
    init-system-helpers        # update-rc.d, invoke-rc.d and service for the machine without systemd
    util-linux                 # unshare, nsenter, setpriv, mount
    passwd                     # useradd, which an installation calls
    procps
    strace                     # writes down what the installer runs, and lets it fail
    e2fsprogs                  # the disk whose power is cut
)
ARCHIVERS=(                    # independent tools that write and read the archives of the tests
    unzip p7zip-full libarchive-tools python3
)
PACKERS=(                      # what tools/make_release.sh makes
    rpm zstd
    unzip                      # looks into the payload
)
CHECKERS=(
    clang libclang-rt-14-dev   # the second compiler, its sanitizers and libFuzzer
    clang-format clang-tidy shellcheck
    valgrind                   # a walk through the screens without the sanitizers
    mandoc                     # the manual pages: their language, and what the tests hold against the program
    lintian                    # reads the .deb
    git                        # lists the files that the checks look at
    python3-jsonschema         # holds what programs are told against docs/schema.json
)
FLEET=(                        # ansible/, and its tests
    ansible-core               # the oldest release that the role is for
    ansible-lint
)
SOAK=(
    debootstrap                # makes the file trees of other releases
    stress-ng                  # keeps the processors busy beside the check
)
MEASURE=(
    time                       # GNU time, for the peak memory of a run
    gnuplot-nox                # draws the figure of docs/performance.md
    e2fsprogs                  # the file system that an installation is measured on
)

usage() {
    echo "usage: ${0##*/} [--list] build|check|demo|bench|release|soak ..." >&2
    exit 2
}

packages_of_group() {
    case "$1" in
        build) printf '%s\n' "${COMPILE[@]}" ;;
        demo) printf '%s\n' "${COMPILE[@]}" "${MACHINE[@]}" ;;
        check) printf '%s\n' "${COMPILE[@]}" "${MACHINE[@]}" "${ARCHIVERS[@]}" "${PACKERS[@]}" "${CHECKERS[@]}" "${FLEET[@]}" ;;
        release) printf '%s\n' "${COMPILE[@]}" "${PACKERS[@]}" ;;
        bench) printf '%s\n' "${COMPILE[@]}" "${ARCHIVERS[@]}" "${MEASURE[@]}" ;;
        soak) packages_of_group check; printf '%s\n' "${SOAK[@]}" ;;
        *) usage ;;
    esac
}

# Prints those of the named packages that are not installed.
missing_of() {
    comm -13 \
        <(dpkg-query -W -f='${db:Status-Status} ${Package}\n' -- "$@" 2>/dev/null | sed -n 's/^installed //p' | sort -u) \
        <(printf '%s\n' "$@")
}

list_only=no
[[ ${1-} == --list ]] && { list_only=yes; shift; }
(($# > 0)) || usage
needed=$(for group in "$@"; do packages_of_group "$group"; done | sort -u)
mapfile -t needed <<<"$needed"

if [[ $list_only == yes ]]; then
    printf '%s\n' "${needed[@]}"
    exit 0
fi
[[ ${KALMO_SKIP_PACKAGES-} == 1 ]] && exit 0

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    echo "${0##*/}: this system has no apt-get. What is needed, under its Debian 12 package names:" >&2
    echo "    ${needed[*]}" >&2
    echo "Install the like by hand, then set KALMO_SKIP_PACKAGES=1." >&2
    exit 1
fi

missing=$(missing_of "${needed[@]}")
[[ -z $missing ]] && exit 0
mapfile -t missing <<<"$missing"

as_root=()
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
        echo "${0##*/}: run this as root, then try again:" >&2
        echo "    apt-get install ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "installing Debian packages: ${missing[*]}" >&2
# RUNLEVEL=1 keeps a package's own service from being started on a machine that runs no init system.
apt_get() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive RUNLEVEL=1 \
        apt-get -qq -y -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 "$@" >&2
}
apt_get update || echo "${0##*/}: apt-get update failed; trying with the package lists at hand" >&2
if ! apt_get install --no-install-recommends "${missing[@]}" || [[ -n $(missing_of "${missing[@]}") ]]; then
    echo "${0##*/}: could not install: ${missing[*]}" >&2
    exit 1
fi
