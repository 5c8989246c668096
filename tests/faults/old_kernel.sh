#!/bin/bash
# The unattended story on a kernel as old as 3.10: the installer's system calls that are newer fail with ENOSYS.
#
#   old_kernel.sh CURRENT NEXT [each]    folders with the installer and the payload of two versions
#
# All of them fail at once, or with "each" one a time, as on the kernels between. Run it in a throwaway machine.
set -u
story=${BASH_SOURCE[0]%/*}/../../samples/story/unattended.sh
# What came after 3.10, as far as a program of today's libraries could ask for it.
newer=(sched_setattr sched_getattr renameat2 seccomp getrandom memfd_create execveat membarrier mlock2 copy_file_range
    preadv2 pwritev2 pkey_mprotect pkey_alloc pkey_free statx io_pgetevents rseq pidfd_send_signal io_uring_setup open_tree
    move_mount fsopen pidfd_open clone3 close_range openat2 pidfd_getfd faccessat2 epoll_pwait2 futex_waitv '?fchmodat2')
folders=("$(realpath "$1")" "$(realpath "$2")")
work=$(mktemp -d)
failures=0

# without CALLS [NAME]: the story with an installer under strace, which lets go of what the installer runs.
without() {
    local folder asked
    : >"$work/log"
    rm -rf /srv/zd # the story begins without anything
    for folder in "${folders[@]}"; do
        mkdir -p "$work$folder"
        ln -sfn "$folder/tree" "$work$folder/tree"
        # The usual limit: where files cannot be closed at once, they are closed one by one, of which strace sees each.
        printf '#!/bin/sh\nulimit -n 1024\nexec strace -f -b execve -qq -A -o %s -e signal=none -e trace=%s -e inject=%s:error=ENOSYS %s "$@"\n' \
            "$work/log" "$1" "$1" "$folder/kalmoinstall" >"$work$folder/kalmoinstall"
        chmod +x "$work$folder/kalmoinstall"
    done
    "$story" "${folders[@]/#/$work}" >"$work/told" 2>&1
    local status=$?
    asked=$(grep INJECTED "$work/log" | sed -E 's/^[0-9]+ +//; s/\(.*//' | sort | uniq -c | tr -s ' \n' ' ')
    if ((status == 0)); then
        echo "ok      without ${2-$1}: asked for${asked:- none}"
    else
        printf 'FAILED  without %s: asked for%s\n' "${2-$1}" "$asked"
        grep -A 20 FAILED "$work/told"
        failures=$((failures + 1))
    fi
}

if [[ ${3-} == each ]]; then
    for call in "${newer[@]}"; do without "$call"; done
else
    without "$(IFS=, && echo "${newer[*]}")" "all that came later"
    # The C library asks at every start.
    [[ $(<"$work/log") == *rseq*INJECTED* ]] || { echo "FAILED  nothing was injected"; failures=1; }
fi
rm -rf "$work"
exit $((failures > 0))
