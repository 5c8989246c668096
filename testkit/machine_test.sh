#!/bin/bash
# shellcheck disable=SC2016 # the commands in single quotes are for the shells inside
# Checks of testkit/machine and testkit/in_private_root: what they run is real, and nothing stays.
# Must run as root. Exit status 0 when every check held.
set -uo pipefail

here=$(dirname -- "$(realpath -e -- "${BASH_SOURCE[0]}")")
machine=$here/machine
private_root=$here/in_private_root
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
failures=0

# Every process that the tools start inherits this, except those that the machine's own process 1 starts.
export KALMO_MACHINE_TEST=$work

check() { # DESCRIPTION WANTED GOT
    [[ $2 == "$3" ]] && return
    printf 'FAILED: %s\n  wanted: %q\n  got:    %q\n' "$1" "$2" "$3" >&2
    failures=$((failures + 1))
}

status_of() {
    "$@" </dev/null >/dev/null 2>&1
    echo $?
}

# What may not differ before and after, as far as other programs of the host leave it alone.
outside() {
    cat /proc/self/mountinfo
    find /etc -newer "$work/started" ! -type d
    ls -d /tmp/nspawn-* /run/kalmo* /run/systemd/nspawn* 2>/dev/null
    ls -l /etc/systemd/system /etc/init.d /etc/rc?.d
}

# The processes of this test that are neither this shell nor this function.
processes_left() {
    local process found
    mapfile -t found < <(grep -slzxF "KALMO_MACHINE_TEST=$work" /proc/[0-9]*/environ)
    for process in "${found[@]}"; do
        [[ $process =~ ^/proc/($$|$BASHPID)/ || ! -e $process ]] || ps -o pid=,args= -p "$(basename "${process%/environ}")"
    done
}

# check_gone DESCRIPTION TOOL_PID: soon after the tool's end no process and no control group of it is left.
check_gone() {
    local tries left
    for ((tries = 0; tries < 600; ++tries)); do
        left=$(find /sys/fs/cgroup -maxdepth 3 -name "kalmo-machine.$2" 2>/dev/null; pgrep -f "__(keep|inside) $2 ")
        [[ -n $left ]] || break
        sleep 0.05
    done
    check "$1: nothing is left" '' "$left"
}

test_status_and_streams() {
    local kind
    for kind in systemd sysv; do
        check "$kind: a status" 7 "$(status_of "$machine" "$kind" -- sh -c 'exit 7')"
        check "$kind: a signal" 139 "$(status_of "$machine" "$kind" -- sh -c 'kill -SEGV $$')"
        check "$kind: streams" $'in out\nerr' "$(echo in | "$machine" "$kind" -- sh -c 'echo "$(cat) out"; echo err >&2' 2>&1)"
        check "$kind: directory and marker" "$PWD $kind" "$("$machine" "$kind" -- sh -c 'echo "$PWD $KALMO_MACHINE"')"
    done
    check "one in the other" running "$("$machine" systemd -- "$machine" systemd -- systemctl is-system-running 2>&1)"
}

test_enter() {
    local kind tool ready
    for kind in systemd sysv; do
        : >"$work/ready"
        # shellcheck disable=SC2094 # the machine writes once, and is read until it has
        "$machine" "$kind" --timeout 60 -- sh -c 'echo kept >/srv/kept; echo ready; exec sleep infinity' >>"$work/ready" &
        tool=$!
        until ready=$(<"$work/ready") && [[ -n $ready || ! -d /proc/$tool ]]; do sleep 0.05; done
        check "$kind: entered" "kept $kind in"$'\n7' "$("$machine" enter "$tool" -- \
            sh -c 'echo $(cat /srv/kept) $KALMO_MACHINE $(cat); exit 7' <<<in; echo $?)"
        kill "$tool"
        wait "$tool" 2>/dev/null
        check "$kind: no machine to enter" 125 "$(status_of "$machine" enter "$tool" -- true)"
    done
}

test_folders() {
    local folder
    for folder in real readonly copied hidden; do
        mkdir -p "$work/$folder"
        echo before >"$work/$folder/file"
    done
    check "folders" $'readonly:before\nhidden absent' "$(
        "$machine" systemd --bind "$work/real" --bind-ro "$work/readonly" --copy "$work/copied" -- sh -c '
            cd "$1"
            for folder in real readonly copied; do { echo after >$folder/file; } 2>/dev/null; done
            grep -H before */file | sed "s|/file||"
            [ -e hidden ] || echo hidden absent' - "$work"
    )"
    check "only --bind lets changes out" $'copied/file:before\nhidden/file:before\nreadonly/file:before\nreal/file:after' \
        "$(cd "$work" && grep . ./*/file | cut -c3-)"
}

# A tree of another release: this one with another release file, and nothing of it may change.
test_tree() {
    local tree=$work/tree
    # shellcheck disable=SC2016
    check "another tree" $'another systemd running here\nthe project\n125' "$(unshare --mount bash -c '
        mkdir "$1" "$2" && mount -t tmpfs none "$2" && mkdir "$2"/{upper,work} && cd "$2" &&
            mount -t overlay none -o "lowerdir=/,upperdir=$2/upper,workdir=$2/work" "$1" && echo another >"$1/etc/debian_version"
        : >here
        "$3" systemd --tree "$1" -- sh -c '\''
            echo $(cat /etc/debian_version) $KALMO_MACHINE $(systemctl is-system-running) $(ls here)
            [ ! -e "$1" ] || echo the project
            echo changed >/etc/debian_version'\'' - "$3"
        grep -v another "$1/etc/debian_version"
        "$3" systemd --tree "$1/etc" -- true 2>/dev/null
        echo $?' - "$tree" "$work/layer" "$machine")"
}

# Runs a command line at a terminal, presses Ctrl-C when it says it is ready, prints what follows and the status.
press_ctrl_c() { # COMMAND_LINE
    local from to terminal_pid
    # A shell that stayed between the terminal and the command would take the Ctrl-C for itself.
    coproc terminal { exec script --quiet --return --command "exec $1" /dev/null; }
    terminal_pid=$!
    exec {from}<&"${terminal[0]}" {to}>&"${terminal[1]}"
    read -r _ <&"$from"
    printf '\003' >&"$to"
    sed 's/^^C//' <&"$from"
    wait "$terminal_pid"
    echo "status $?"
}

test_terminal() {
    local terminal
    check "--tty needs no terminal" $'/dev/pts/0\r' "$("$machine" systemd --tty -- tty </dev/null)"
    terminal=$(script --quiet --return --command "stty rows 33 cols 99; $machine systemd -- stty size" /dev/null </dev/null)
    check "the caller's terminal" $'33 99\r' "$terminal"
    # A program that handles Ctrl-C is left alone, one that does not ends the machine.
    check "Ctrl-C is the command's" $'caught\r\nstatus 3' "$(press_ctrl_c "$machine sysv --timeout 60 -- \
        sh -c 'trap \"echo caught; exit 3\" INT; echo ready; while :; do sleep 0.05; done'")"
    check "Ctrl-C ends a plain command" 'status 130' \
        "$(press_ctrl_c "$machine systemd --timeout 60 -- sh -c 'echo ready; exec sleep 1000'")"
}

# end_by SIGNAL SECONDS COMMAND [ARGUMENT...]: after so many seconds the signal ends the tool and all it has begun.
end_by() {
    local signal=$1 seconds=$2 what="$1 after $2 s: ${*:3:2}" tool status
    shift 2
    env --default-signal=INT "$@" </dev/null 2>/dev/null & # a background job of this shell would ignore SIGINT
    tool=$!
    sleep "$seconds"
    kill -s "$signal" "$tool"
    wait "$tool" 2>/dev/null
    status=$?
    check "$what" $((128 + $(kill -l "$signal"))) "$status"
    check_gone "$what" "$tool"
}

test_ends() {
    local signal stubborn=(-- sh -c 'trap "" INT TERM; sleep 1000; :')
    for signal in INT TERM KILL; do
        end_by "$signal" 0.15 "$machine" systemd "${stubborn[@]}" # while it comes up
        end_by "$signal" 0.8 "$machine" systemd "${stubborn[@]}"
        end_by "$signal" 0.3 "$private_root" "${stubborn[@]}"
    done
    check "time limit" 124 "$(status_of "$machine" systemd --timeout 1 "${stubborn[@]}")"
    # What a command leaves running ends with it.
    check "a process left behind" 0 "$(status_of "$machine" sysv -- sh -c 'setsid sleep 1000 & sleep 0.1')"
    check "a process left behind" 0 "$(status_of "$private_root" sh -c 'setsid sleep 1000 & sleep 0.1')"
}

test_private_root() {
    check "private root: own files" 'mine 1' "$("$private_root" sh -c '
        rm -r /etc/init.d /bin/systemctl && echo "mine $KALMO_PRIVATE_ROOT" >/etc/debian_version
        cat /etc/debian_version' 2>&1)"
    check "private root: a status" 134 "$(status_of "$private_root" sh -c 'kill -ABRT $$')"
}

((EUID == 0)) || { echo "${0##*/}: must run as root" >&2; exit 1; }
sleep 0.01
touch "$work/started"
before=$(outside)
test_status_and_streams
test_enter
test_folders
test_tree
test_terminal
test_ends
test_private_root
for _ in {1..300}; do [[ -n $(processes_left) ]] || break; sleep 0.1; done
check "no process is left" '' "$(processes_left)"
check "nothing outside has changed" "$before" "$(outside)"

((failures == 0)) && echo "all checks held"
exit $((failures > 0))
