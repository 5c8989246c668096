#!/bin/bash
# The interactive installer for whoever sits at the terminal, on the machine it runs on, which must be a
# throwaway one. Tells afterwards what is running, as often as the operator likes.
#
#   interactive.sh CURRENT NEXT     folders with "kalmoinstall" and "kalmoinstall.zip" of two versions
set -u

if [ -z "${KALMO_MACHINE-}" ]; then
    echo "$0: this installs services; run it in a throwaway machine (testkit/machine)" >&2
    exit 1
fi

current=$1
next=$2

# shellcheck source=samples/story/server_state.sh
source "$(dirname -- "${BASH_SOURCE[0]}")/server_state.sh"

# The instances and the manager, a name a line.
services() {
    case $init in
        systemd) systemctl list-unit-files --no-legend 'ZDCS-*' KalmoManager.service | sed 's/\.service.*//' ;;
        *) (cd /etc/init.d && ls -d ZDCS-* KalmoManager 2>/dev/null) ;;
    esac
}
program() {
    case $init in
        systemd) systemctl show --value --property=ExecStart "$1" | sed 's/.*argv\[\]=//; s/ --.*//' ;;
        *) sed -n 's/^Program="//p' "/etc/init.d/$1" | sed 's/ --.*//' ;;
    esac
}
tell() {
    local service directory port
    printf '\nOn this machine (%s):\n' "$init"
    [ -n "$(services)" ] || echo '  nothing is installed'
    for service in $(services); do
        directory=$(dirname "$(program "$service")")
        printf '  %-24s %-10s %s\n' "$service" "$(active "$service" >/dev/null 2>&1 && echo active || echo stopped)" "$directory"
        [[ $service == ZDCS-* ]] || continue
        port=$(sed -n 's/^AccessPort *= *//p' "$directory/ZDConf.ini" | tr -d '\r')
        printf '  %-24s port %-5s %s\n' '' "$port" "$(TRIES=20 greeting "$port" 2>/dev/null || echo 'no answer')"
    done
}

"$current/kalmoinstall"
while :; do
    tell
    printf '\nEnter installer again   n newer version, to upgrade   s shell   q leave\n> '
    read -r answer || break
    case $answer in
        q*) break ;;
        s*) bash ;;
        n*) "$next/kalmoinstall" ;;
        *) "$current/kalmoinstall" ;;
    esac
done
