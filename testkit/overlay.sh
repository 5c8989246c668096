# shellcheck shell=bash
# A throwaway copy of the file tree, and a way to run a command in namespaces that end with their caller.
# testkit/machine and testkit/in_private_root source this file; both set PROGRAM first.
#
# Exit statuses of both tools: that of the command; 128 + N when signal N ended the command or the tool;
# 124 when the time was over; 125 when the tool itself failed.

readonly STAGE=/run/kalmo       # on a tmpfs that only the private mount namespace has
readonly TREE=$STAGE/root       # the copy of /
readonly RUNNING=$STAGE/running # exists as soon as the command is about to run
# Starts the command: everything of ours that stands before it ignores the signals of the keyboard.
# shellcheck disable=SC2034 # used by the two tools
readonly START_COMMAND=(env "--default-signal=INT,QUIT")

COPIED=/              # the file tree that is copied
declare -A FOLDERS=() # the folders to lay over the copy, by path: copy, ro or rw
FOLDER_PATHS=()       # the same once they are staged: element N waits at STAGE/folder.N, outer before inner
END_STATUS=           # set by a signal: what the tool exits with once all is taken down
INTERRUPTED=no

fail() {
    echo "$PROGRAM: $*" >&2
    exit 125
}

require_root() {
    ((EUID == 0)) || fail "must run as root"
}

# Whether the copy has its own at PATH, or cannot have any there.
is_reserved() { # PATH
    case "$1" in
        /dev/shm/?* | /tmp/?*) return 1 ;;
        / | /dev | /dev/* | /proc | /proc/* | /run | /run/* | /sys | /sys/* | /tmp) return 0 ;;
        *) return 1 ;;
    esac
}

# need_folder MODE DIRECTORY: lays DIRECTORY over the copy.
#   copy: writable, what is written vanishes    ro: read-only    rw: the real one, changes stay
need_folder() {
    local path
    path=$(realpath -e -- "$2" 2>/dev/null)
    [[ -d $path ]] || fail "not a directory: $2"
    ! is_reserved "$path" || fail "$path cannot be laid over the copy"
    FOLDERS[$path]=$1
}

# need_tree DIRECTORY: the copy is one of the file tree in DIRECTORY instead of /.
need_tree() {
    COPIED=$(realpath -e -- "$1" 2>/dev/null)
    [[ -d $COPIED ]] || fail "not a directory: $1"
    ! is_reserved "$COPIED" || fail "$COPIED cannot be copied"
    [[ -d $COPIED/etc && (-e $COPIED/bin/sh || -L $COPIED/bin/sh) ]] || fail "not the file tree of a system: $1"
}

# Mount points of what the copy of / is made of: / whatever it is, then the other file systems on disk.
copied_mounts() {
    echo /
    findmnt --real --list --noheadings --output TARGET | grep -vx /
}

# Whether DIRECTORY is in the copy anyway. Of a tree from elsewhere a folder that is in use is never covered.
is_copied() { # DIRECTORY
    if [[ $COPIED == / ]]; then
        [[ $1 != /tmp/* ]] && grep -qxF -- "$(stat -c %m -- "$1")" <(copied_mounts)
    else
        [[ -n $(ls -A -- "$COPIED$1" 2>/dev/null) ]]
    fi
}

# Adds DIRECTORY as a copy unless one that was asked for or the copied tree has it anyway.
need_folder_from_elsewhere() {
    local folder
    ! is_reserved "$1" || return 0
    for folder in "${!FOLDERS[@]}"; do
        [[ $1/ != "$folder"/* ]] || return 0
    done
    is_copied "$1" || need_folder copy "$1"
}

# Mounts at TARGET a copy of the directory SOURCE: reads come from SOURCE, writes stay in memory.
mount_copy() { # SOURCE TARGET
    local layer
    layer=$(mktemp -d "$STAGE/layer.XXXXXX")
    mkdir "$layer"/{lower,upper,work}
    mount --bind -- "$1" "$layer/lower" # a path of our own making needs no escapes in the overlay's options
    chown --reference="$1" -- "$layer/upper"
    chmod --reference="$1" -- "$layer/upper"
    mount -t overlay kalmo -o "lowerdir=$layer/lower,upperdir=$layer/upper,workdir=$layer/work,redirect_dir=on,xino=on" -- "$2"
}

# Lays the copy of / out at TREE and the asked folders at STAGE/folder.N, in a mount namespace of its own.
build_tree() {
    local mount_point i

    trap '' INT QUIT # only the command shall get them, and what started us
    mount -t tmpfs -o mode=0755 kalmo /run
    mkdir -p "$TREE"
    if [[ $COPIED == / ]]; then
        while IFS= read -r mount_point; do
            [[ -d $mount_point && $mount_point != /run* ]] || continue
            mount_copy "$mount_point" "$TREE/${mount_point#/}" || fail "cannot copy $mount_point"
        done < <(copied_mounts)
    else
        mount_copy "$COPIED" "$TREE" || fail "cannot copy $COPIED"
    fi

    ((${#FOLDERS[@]} == 0)) || mapfile -d '' -t FOLDER_PATHS < <(printf '%s\0' "${!FOLDERS[@]}" | LC_ALL=C sort -z)
    for i in "${!FOLDER_PATHS[@]}"; do
        mkdir "$STAGE/folder.$i"
        case "${FOLDERS[${FOLDER_PATHS[i]}]}" in
            copy) mount_copy "${FOLDER_PATHS[i]}" "$STAGE/folder.$i" ;;
            ro) mount --bind -o ro -- "${FOLDER_PATHS[i]}" "$STAGE/folder.$i" ;;
            rw) mount --bind -- "${FOLDER_PATHS[i]}" "$STAGE/folder.$i" ;;
        esac || fail "cannot bring ${FOLDER_PATHS[i]} along"
    done
    mount -t tmpfs -o mode=1777 kalmo /tmp
}

# Waits until the first process of a namespace is gone, or all but its exit status. It outlives all the others.
wait_for_end() { # PID, or nothing when there was none
    local state tries
    [[ -n $1 ]] || return 0
    for ((tries = 0; tries < 500; ++tries)); do
        state=$(ps -o stat= -p "$1") || return 0
        [[ $state != Z* ]] || return 0
        sleep 0.01
    done
}

# Whether a Ctrl-C is ours to act on: nobody but us gets it, or the command does not run yet.
ends_by_interrupt() { # PID of unshare
    local first
    [[ -t 0 ]] || return 0
    # A process that is about to end shows no root: asked last, it vouches for the answer before it.
    first=$(pgrep -P "$1") && [[ ! -e /proc/$first/root$RUNNING && -e /proc/$first/root/run ]]
}

# Runs COMMAND as the first process of new mount and process namespaces and returns its status. The namespaces
# end with COMMAND, with a signal to this shell, and also when this shell is killed. Ctrl-C is left to COMMAND
# when it shares our terminal, and ends everything when it does not.
run_unshared() { # COMMAND [ARGUMENT...]
    local child first status

    trap 'END_STATUS=129' HUP
    trap 'END_STATUS=131' QUIT
    trap 'END_STATUS=143' TERM
    trap 'END_STATUS=124' ALRM
    trap 'INTERRUPTED=yes; ! ends_by_interrupt "$child" || END_STATUS=130' INT

    # A shell's background child ignores SIGINT and SIGQUIT, which the command must not inherit. The comparison
    # closes the moment between the fork and the parent-death signal.
    # shellcheck disable=SC2016
    setpriv --pdeathsig KILL env --default-signal=INT,QUIT -- \
        bash -c '[[ $PPID == "$1" ]] && shift && exec unshare --mount --propagation private --pid --fork --kill-child --mount-proc -- "$@"' \
        - "$$" "$@" <&0 &
    child=$!
    while :; do
        INTERRUPTED=no
        wait "$child"
        status=$?
        if [[ -n $END_STATUS ]]; then
            first=$(pgrep -P "$child")
            kill -KILL "$child" 2>/dev/null
            wait "$child" 2>/dev/null
            wait_for_end "$first"
            return "$END_STATUS"
        fi
        [[ $INTERRUPTED == yes ]] || return "$status"
    done
}
