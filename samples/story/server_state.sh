# What the services of this machine are doing. Sourced by what looks at a throwaway machine.
# shellcheck shell=bash

[ -e /run/systemd/system ] && init=systemd || init=sysv

absent() { [ ! -e "$1" ] && [ ! -L "$1" ]; }

active() {
    case $init in
        systemd) systemctl is-active --quiet "$1" ;;
        *) "/etc/init.d/$1" status ;;
    esac
}

# The process of a service.
pid() {
    case $init in
        systemd) systemctl show --value --property=MainPID "$1" ;;
        *) cat "/run/$1.pid" ;;
    esac
}

# say_to PORT [LINE...]: what a server says, a line each for its greeting and its answer to every LINE. A service that
# was just started gets TRIES tenths of a second, ten seconds without it.
say_to() {
    local port=$1 tries=${TRIES:-100} line
    shift
    while ((tries-- > 0)); do
        if exec 3<>"/dev/tcp/127.0.0.1/$port"; then
            for line in "" "$@"; do
                [ -z "$line" ] || printf '%s\n' "$line" >&3
                read -r line <&3
                printf '%s\n' "$line"
            done
            exec 3>&-
            return 0
        fi 2>/dev/null
        sleep 0.1
    done
    return 1
}
greeting() { say_to "$1"; }

# login PORT NAME PASSWORD: OK or NO.
login() { say_to "$1" "LOGIN $2 $3" | tail -n 1; }

# Where the machine's boot has a script.
boot_links() { ls -d /etc/rc?.d/[SK]??"$1" /etc/runlevels/*/"$1" 2>/dev/null; }
registered() {
    case $init in
        systemd) [ -e "/etc/systemd/system/$1.service" ] && systemctl is-enabled --quiet "$1" ;;
        *) [ -x "/etc/init.d/$1" ] && boot_links "$1" | grep . ;;
    esac
}
unregistered() {
    case $init in
        systemd) absent "/etc/systemd/system/$1.service" && ! systemctl cat "$1" ;;
        *) absent "/etc/init.d/$1" && ! boot_links "$1" | grep . ;;
    esac
}

# The operator stops a service.
service_stop() {
    case $init in
        systemd) systemctl stop "$1" ;;
        *) "/etc/init.d/$1" stop ;;
    esac
}
