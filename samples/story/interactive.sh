#!/bin/bash
# The interactive installer for whoever sits at the terminal, on the machine it runs on, which must be a
# throwaway one. Tells afterwards what is running, as often as the operator likes.
#
#   interactive.sh CURRENT NEXT     folders with "kalmoinstall" and "kalmoinstall.zip" of two versions
set -u

if [ -z "${KALMO_MACHINE-}" ]; then
    echo "$0: this installs services; run it in a throwaway machine (tests/machine/machine)" >&2
    exit 1
fi

current=$1
next=$2

[ -e /run/systemd/system ] && init=systemd || init=sysv

# The instances and the manager, a name a line.
services() {
    case $init in
        systemd) systemctl list-unit-files --no-legend 'ZDCS-*' KalmoManager.service | sed 's/\.service.*//' ;;
        *) (cd /etc/init.d && ls -d ZDCS-* KalmoManager 2>/dev/null) ;;
    esac
}
state() {
    case $init in
        systemd) systemctl is-active "$1" ;;
        *) "/etc/init.d/$1" status >/dev/null 2>&1 && echo active || echo inactive ;;
    esac
}
program() {
    case $init in
        systemd) systemctl show --value --property=ExecStart "$1" | sed 's/.*argv\[\]=//; s/ --.*//' ;;
        *) sed -n 's/^Program="//p' "/etc/init.d/$1" | sed 's/ --.*//' ;;
    esac
}
greeting() {
    local line
    exec 3<>"/dev/tcp/127.0.0.1/$1" && read -r -t 2 line <&3 && echo "$line"
} 2>/dev/null

tell() {
    local service directory port
    printf '\nOn this machine (%s):\n' "$init"
    [ -n "$(services)" ] || echo '  nothing is installed'
    for service in $(services); do
        directory=$(dirname "$(program "$service")")
        printf '  %-24s %-10s %s\n' "$service" "$(state "$service")" "$directory"
        [[ $service == ZDCS-* ]] || continue
        port=$(sed -n 's/^AccessPort *= *//p' "$directory/ZDConf.ini" | tr -d '\r')
        printf '  %-24s port %-5s %s\n' '' "$port" "$(greeting "$port" || echo 'no answer')"
    done
}

folder=$current
while :; do
    "$folder/kalmoinstall"
    tell
    printf '\nEnter: the installer again   n: the newer version, to upgrade   s: a shell   q: throw the machine away\n> '
    read -r answer || break
    case $answer in
        q*) break ;;
        s*) bash ;;
        n*) folder=$next ;;
        *) folder=$current ;;
    esac
done
