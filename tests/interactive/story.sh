#!/bin/bash
# shellcheck disable=SC2005,SC2010,SC2013,SC2046,SC2059,SC2116,SC2154 # names that are made here are single words
# The machine of the stories, and what they look at. Beside these functions they know those of
# samples/story/server_state.sh.

# Takes every server off the machine, and the folders and accounts of the stories; lays out the payloads.
fresh() {
    local service version
    pkill -xf './zdlogger 600'
    umount -q /etc/systemd/system/multi-user.target.wants /usr/sbin/useradd
    for service in $(ls /etc/systemd/system /etc/init.d | grep -xE '(ZDCS-.*|KalmoManager)(\.service)?' | sort -u); do
        service=${service%.service}
        service_stop "$service"
        case $init in
            systemd) systemctl disable "$service"; rm -rf "/etc/systemd/system/$service.service"* ;;
            *) rm -f "/etc/init.d/$service"; update-rc.d "$service" remove ;;
        esac
    done
    [ "$init" != systemd ] || eventually forgotten
    rm -rf /usr/local/ZDSQL /srv/zd /srv/dist /tmp/record* /tmp/trace
    userdel kdaemon
    for version in current next; do
        mkdir -p /srv/zd /srv/dist/$version
        cp "$KALMO_PAYLOAD/$version/"kalmoinstall* /srv/dist/$version
    done
    test -x /srv/dist/current/kalmoinstall -a -s /srv/dist/next/kalmoinstall.zip
}

equal() { [ "$1" = "$2" ] || { diff <(echo "$1") <(echo "$2"); false; }; }
eventually() { for _ in {1..600}; do "$@" && return; sleep 0.1; done; return 1; }

# install NAME PORT: a server in /srv/zd/NAME, without asking anybody.
install() {
    printf '[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=%s\nRepertoire=/srv/zd/%s\nPort=%s\n' "$1" "$1" "$2" >/tmp/orders
    /srv/dist/current/kalmoinstall /PILOT=/tmp/orders /DEBUG=/tmp/trace2 && test -e "/srv/zd/$1/Install.log" && greeting "$2"
}
# forgotten: systemd knows no server any more. One that was just being started may fail behind the removal of its unit.
forgotten() {
    systemctl daemon-reload && systemctl reset-failed &&
        [ -z "$(systemctl list-units --all --no-legend --plain 'ZDCS-*' KalmoManager.service)" ]
}
idle() { ! pgrep -x kalmoinstall; }
# works: an installer has the machine. Before the first one there is no lock to look for.
works() { local inode && inode=$(stat -c %i /run/kalmoinstall.lock) && grep -q ":$inode " /proc/locks; }
listens() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }

# busy FOLDER: a program of the instance in a folder runs: its file is waited for. soon_idle: not much longer.
busy() {
    mkdir -p "$1"
    cp --remove-destination /bin/sleep "$1/zdlogger"
    (cd "$1" && exec ./zdlogger 600 >/dev/null 2>&1) &
}
soon_idle() { (sleep 2; pkill -xf './zdlogger 600') >/dev/null 2>&1 & }

# files [FOLDER...]: all of them, with what changes when they are touched, and the names in /tmp. Of a folder its time
# would tell of files that came and went, and a server's logger writes when it comes to it.
files() {
    (($# > 0)) || set -- etc home opt srv usr/local var/lib
    cd / && find "$@" -xdev -path var/lib/systemd -prune -o -name kalmo.log -o \
        \( -type d -printf '%p %M %U:%G\n' -o -printf '%p %M %U:%G %s %C@ %l\n' \) | sort
    ls /tmp | grep -vxE 'trace2?|orders|record.*'
}
processes() { for service in "$@"; do active "$service" >/dev/null && pid "$service" || echo 0; done; }
machine_now() { files; processes ZDCS-first ZDCS-ZDSQL KalmoManager; }
remember() { machine_now >/run/machine; }
unchanged() { machine_now | diff /run/machine -; }

# fate SERVICE...: what has become of them since "fate_of SERVICE...": "=" the same process, "!" another one, "-" none.
fate_of() { processes "$@" >/run/fate; }
fate() {
    processes "$@" | paste /run/fate - | while read -r old new; do
        case $new in 0) printf - ;; "$old") printf '=' ;; *) printf '!' ;; esac
    done
}

# The command lines of the programs that the recorded run has started itself, a line each: words are separated by
# blanks, a shell's stand behind "sh: ", and the enciphered password is HEX. Each process has a file of the record. The
# first that begins with our program is ours; it tells the numbers of its children, whose files begin with what they
# became. Arguments are quoted, with escapes as in C, which printf knows.
commands() {
    local own
    cd /tmp && own=$(grep -l '^execve("/srv/dist/' record.* | head -n 1)
    for child in $(sed -nE 's/^(fork|vfork|clone3?)\(.* = ([0-9]+)$/\2/p' "$own"); do
        head -n 1 "record.$child" | sed -nE 's/^execve\("[^"]*", \[(.*)\], 0x.*/\1/p' |
            sed -E 's/^"//; s/"$//; s/", "/ /g; s/^sh -c (-- )?/sh: /; s/(--PWDC )[0-9A-F]+/\1HEX/; s/%/%%/g'
    done | while read -r line; do printf "${line//\\\"/\"}\n"; done
}
# ran COMMANDS: these and no others, but for the first and the last, with "; " between them and what asks systemd told
# shortly.
ran() {
    local show="--property=Description,ExecStart,Type show" all="--all --type=service --full --no-pager --no-legend"
    equal "$(printf %s "--no-pager --no-legend; $1; sh: clear 2>/dev/null" | tr -s ' \n' ' ' | sed 's/; */\n/g')" \
        "$(commands | sed "s,^/bin/systemctl ,,; s/^list-units $all/all/; s/^list-unit-files ${all#--all }/files/
            s/^$show/about/; s/^--property=ActiveState show/state/; s/^--property=LoadState show/loaded/")"
}

# empty_root FOLDER: a root with the program, its payload and what the kernel gives.
empty_root() {
    mkdir -p "$1"/{dev,proc,tmp,srv/dist,usr/local/bin} && mount --rbind /dev "$1/dev" && mount -t proc proc "$1/proc" &&
        cp -r /srv/dist/current "$1/srv/dist"
}

# The server and the manager run; without systemd a start does not wait for them.
both_run() { active ZDCS-ZDSQL && active KalmoManager; }

# server VERSION: the one of the folder that is proposed runs, with the settings that are proposed.
server() {
    eventually both_run && registered ZDCS-ZDSQL && registered KalmoManager &&
        equal "ZDSQL ZDSQL $1 ready"$'\nOK\nNO' "$(say_to 4900 'LOGIN Admin '; login 4900 Admin no)" &&
        cd /usr/local/ZDSQL &&
        equal '[INIT]
DBRootPath = %%EXE%%/BDD
AccessPort = 4900
Name = ZDSQL
[TELEMETRY]
ACTIVE = 1
755 root kalmo
4755 root kalmomanager
755 root zdlogger
755 root help/readme.txt
755 root tvsqlsrv.so
755 root tvzdsrv.so' "$(cat ZDConf.ini; stat -c '%a %U %n' kalmo* zdlogger help/* tv*)"
}

# wrapped: another program starts the first server.
wrapped() {
    mkdir /etc/systemd/system/ZDCS-first.service.d
    printf '[Service]\nExecStart=\nExecStart=/usr/bin/nice --adjustment=5 /srv/zd/first/kalmo --service\n' \
        >/etc/systemd/system/ZDCS-first.service.d/x.conf
    systemctl daemon-reload
}

# kept: the settings of two servers that an upgrade does not touch; upgraded FATE ACTIVE VERSIONS: what is so after one.
kept() { cat /srv/zd/*/ZDConf.ini | grep -vE 'TELEMETRY|ACTIVE'; }
upgraded() {
    cd /srv/zd && equal "$1" "$(fate ZDCS-first ZDCS-second KalmoManager)" && equal "$(cat /run/kept)" "$(kept)" &&
        equal "$2" "$(grep -H ACTIVE ./*/ZDConf.ini | sed 's/^..//; s/.ZDConf.*=//')" &&
        equal "$3" "$(echo $(for name in first second; do $name/kalmo --version; done | cut -d' ' -f2))"
}

# installed: what installer and server made of the machine, but for what an unattended run leaves alone or writes itself.
installed() {
    eventually settled >/dev/null
    cd /usr/local/ZDSQL && find . -name Install.log -o -name accounts -o -printf '%p %M %u\n' | sort
    find . -type f -not -path './BDD/*' -not -name '*.log' -not -name '*.LOG' -not -name '*.ini' -exec sha256sum {} + | sort
    sed '/DaemonUser\|TELEMETRY\|ACTIVE/d; s,%%EXE%%/BDD,/usr/local/ZDSQL/BDD/,' ZDConf.ini
    for service in ZDCS-ZDSQL KalmoManager; do active $service >/dev/null && echo running; registered $service && echo registered; done
    TRIES=5 greeting 4900 || echo silent
}
settled() { both_run || unregistered ZDCS-ZDSQL; }

# left PROGRAMS: what a removal of the first server leaves of them, and whether its service is registered.
left() {
    cd /srv/zd/first && ! active ZDCS-first && test -s ZDConf.ini -a -d BDD/__system &&
        equal "$1" "$(echo $(ls | grep -E '^(kalmo|zdlogger|tv)'; ! registered ZDCS-first >/dev/null || echo registered))"
}
# The first server is there and has its marker.
done_first() { equal OK "$(cat /srv/zd/first/Install.log)" && greeting 4950 && active ZDCS-first; }
