#!/bin/bash
# The main job, unattended, on the machine it runs on, which must be a throwaway one: two instances are
# installed, one is upgraded, all is removed again, and every step is looked at.
#
#   unattended.sh CURRENT NEXT     folders with "kalmoinstall" and "kalmoinstall.zip" of two versions
#
# Prints one line a check; exits with 1 at the end when one failed.
set -u

if [ -z "${KALMO_MACHINE-}" ]; then
    echo "$0: this installs services; run it in a throwaway machine (testkit/machine)" >&2
    exit 1
fi

current=$1
next=$2
first=/srv/zd/first
second="/srv/zd/second one" # a directory with a blank is a directory too
work=$(mktemp -d)
failures=0

# shellcheck source=samples/story/server_state.sh
source "$(dirname "$0")/server_state.sh"

say() { printf '\n\033[1m%s\033[0m\n' "$*"; }

# check WHAT COMMAND...: the command must succeed.
check() {
    local what=$1
    shift
    if "$@" >"$work/out" 2>&1; then
        printf '  ok      %s\n' "$what"
    else
        printf '  FAILED  %s\n' "$what"
        sed 's/^/          /' "$work/out"
        failures=$((failures + 1))
    fi
}

# equal EXPECTED ACTUAL
equal() { [ "$1" = "$2" ] || { printf 'expected: %s\nis:       %s\n' "$1" "$2"; false; }; }

# orders OPERATION NAME [DIRECTORY PORT]: writes a parameter file.
orders() {
    {
        printf '[PILOTAGE]\nMAJ=%s\n[SERVEUR]\nServeur=%s\n' "$1" "$2"
        [ $# -lt 4 ] || printf 'Repertoire=%s\nPort=%s\n' "$3" "$4"
    } >"$work/pilot.ini"
    : >"$work/trace"
}

# pilot FOLDER OPERATION NAME [DIRECTORY PORT]: one unattended run of the installer in FOLDER.
pilot() {
    local foreseen
    orders "${@:2}"
    LC_ALL=C "$1/kalmoinstall" --check "$work/pilot.ini" >"$work/foreseen"
    foreseen=$?
    printf '  $ kalmoinstall /PILOT=pilot.ini    (MAJ=%s Serveur=%s%s)\n' "$2" "$3" "${4:+ Repertoire=$4 Port=$5}"
    check "said nothing and returned 0" equal 0 \
        "$("$1/kalmoinstall" "/PILOT=$work/pilot.ini" "/DEBUG=$work/trace" "/RESULT=$work/result" 2>&1; echo $?)"
    check "came out as --check had told" as_foreseen "$foreseen"
}

# as_foreseen STATUS: the run did the steps that were told before, all of them and no others, or failed as was told; and
# its result says so.
as_foreseen() {
    case $1 in
        0)
            equal "$(sed -n 's/^  //p' "$work/foreseen")" "$(sed 's/^.\{23\}  //' "$work/trace")" &&
                grep -q '"state": "ok"' "$work/result" && grep -q '"changed": true' "$work/result"
            ;;
        1) grep '^Error: ' "$work/foreseen" && grep -q '"state": "failed"' "$work/result" && grep -q '"changed": false' "$work/result" ;;
        *) false ;;
    esac || { cat "$work/foreseen" "$work/trace" "$work/result"; false; }
}

# What an installer could change: files of the servers and of the system, and the processes of the services. A server's
# logger writes when it comes to it.
machine_now() {
    find /srv/zd /etc/init.d /etc/systemd/system /usr/bin/nice /usr/bin/env ! -name trace ! -name kalmo.log -printf '%p %m %s %T@ %C@\n'
    pgrep -a 'kalmo|zdlogger'
}

# refuses WHY OPERATION NAME [DIRECTORY PORT]: such a run changes nothing, and its trace says why.
refuses() {
    local why=$1 before
    shift
    before=$(machine_now)
    orders "$@"
    "$current/kalmoinstall" "/PILOT=$work/pilot.ini" "/DEBUG=$work/trace"
    { grep -q -- "$why" "$work/trace" || { cat "$work/trace"; false; }; } && equal "$before" "$(machine_now)"
}

# Lets another program start the first instance, in the way of administrators, and takes that back.
wrap() {
    case $init in
        systemd)
            mkdir -p /etc/systemd/system/ZDCS-first.service.d
            printf '[Service]\nExecStart=\nExecStart=/usr/bin/nice --adjustment=5 %s --service\n' "$first/kalmo" \
                >/etc/systemd/system/ZDCS-first.service.d/nice.conf
            systemctl daemon-reload
            ;;
        *) sed -i 's,^Program=",&/usr/bin/nice --adjustment=5 ,' /etc/init.d/ZDCS-first ;;
    esac
}
unwrap() {
    case $init in
        systemd) rm -r /etc/systemd/system/ZDCS-first.service.d && systemctl daemon-reload ;;
        *) sed -i 's,/usr/bin/nice --adjustment=5 ,,' /etc/init.d/ZDCS-first ;;
    esac
}
wrapped_stays() {
    local result=0 state=running
    [ "$init" = systemd ] || state=stopped # a script looks for the process of its program
    wrap
    listed first - - "$state" /usr/bin/ false || result=1
    refuses 'not of this product: "/usr/bin/nice' 1 first && refuses 'not of this product: "/usr/bin/nice' 3 first || result=1
    unwrap
    return $result
}

# Stopped and out of the boot, an instance is still one: its directory is taken, and an upgrade finds it.
asleep_is_found() {
    case $init in
        systemd) systemctl disable --now ZDCS-second ;;
        *) "/etc/init.d/ZDCS-second" stop && update-rc.d ZDCS-second disable ;;
    esac
    refuses 'directory of the instance ZDCS-second' 2 third "$second" 4902 || return
    listed second 4901 "$(server_version "$next")" stopped "$second/" true || return
    orders 1 second
    "$next/kalmoinstall" "/PILOT=$work/pilot.ini" "/DEBUG=$work/trace"
    marked "$second" && greets 4901 "ZDSQL second $(server_version "$next") ready"
}

runs() { active "$1" || { cat "$work/trace"; false; }; }
greets() { equal "$2" "$(greeting "$1")"; }

# listed NAME PORT VERSION STATE DIRECTORY OURS: so the list tells it, to people and to programs, and changes nothing.
listed() {
    local name=$1 before row json service=ZDCS-$1
    before=$(machine_now)
    row=$(LC_ALL=C "$current/kalmoinstall" --list | awk -v name="$name" '$1 == name { $1 = $1; print }')
    json=$("$current/kalmoinstall" --list --json | sed -n "/\"name\": \"$name\"/,/}/p" | tr -d '\n' | tr -s ' ')
    [ "$name" != kalmomanager ] || service=KalmoManager
    [ "$6" = true ] || name+=' *'
    equal "$before" "$(machine_now)" && equal "$name $2 $3 $4 $5" "$row" &&
        equal "$(printf ' "name": "%s", "service": "%s", "port": %s, "version": "%s", "directory": "%s", "state": "%s", "ours": %s }' \
            "$1" "$service" "$2" "$3" "$5" "$4" "$6" | sed 's/": "\?-"\?,/": null,/g')" "${json%,}"
}

version_of() { "$1/kalmoinstall" --version | sed 's/.* //'; }
server_version() { "$1/tree/kalmo" --version | sed 's/.* //'; }

# Every entry but the licence is in the directory, byte for byte, with its mode.
files_installed() {
    local entry mode
    (cd "$2/tree" && find . -type f) | while read -r entry; do
        if [ "$entry" = ./license.txt ]; then
            absent "$1/$entry" || return 1
            continue
        fi
        cmp "$2/tree/$entry" "$1/$entry" || return 1
        mode=755
        [ "$entry" != ./kalmomanager ] || mode=4755
        equal "$mode root root" "$(stat -c '%a %U %G' "$1/$entry")" || return 1
    done
}

config_is() { equal "$(printf '[INIT]\nDBRootPath = %s/BDD/\nAccessPort = %s\nName = %s' "$1" "$2" "$3")" "$(cat "$1/ZDConf.ini")"; }
marked() { equal OK "$(cat "$1/Install.log")"; }

installed() { # DIRECTORY PORT NAME FOLDER
    check "the marker holds OK" marked "$1"
    check "every entry is in place with its mode, the licence is not" files_installed "$1" "$4"
    check "the configuration holds its keys in their order" config_is "$1" "$2" "$3"
    check "service ZDCS-$3 is registered" registered "ZDCS-$3"
    check "service ZDCS-$3 is active" runs "ZDCS-$3"
    check "port $2 answers" greets "$2" "ZDSQL $3 $(server_version "$4") ready"
}

say "Init system: $init. Install the first instance"
pilot "$current" 2 first "$first" 4900
installed "$first" 4900 first "$current"
check "service KalmoManager is active" runs KalmoManager

say "Install a second instance beside it"
pilot "$current" 2 second "$second" 4901
installed "$second" 4901 second "$current"
check "the manager still runs from the first directory" grep -q "$first/kalmomanager" "/proc/$(pid KalmoManager)/cmdline"

check "the manager sees both running" equal "$(printf 'ZDCS-first 4\nZDCS-second 4')" "$("$first/kalmomanager" --list | sort)"

check "the list tells the first instance" listed first 4900 "$(server_version "$current")" running "$first/" true
check "the list tells the second instance" listed second 4901 "$(server_version "$current")" running "$second/" true
check "the list tells the manager" listed kalmomanager - "$(server_version "$current")" running "$first/" true

say "Upgrade the first instance to $(server_version "$next")"
printf 'Comment=kept\r\n; and this line too\n' >>"$first/ZDConf.ini"
cp "$first/ZDConf.ini" "$work/before.ini"
second_pid=$(pid ZDCS-second)
pilot "$next" 1 first
check "the marker holds OK" marked "$first"
check "every entry is the new one" files_installed "$first" "$next"
check "the running server is the new one" greets 4900 "ZDSQL first $(server_version "$next") ready"
check "the configuration is as before, byte for byte" cmp "$work/before.ini" "$first/ZDConf.ini"
check "the second instance never stopped" equal "$second_pid" "$(pid ZDCS-second)"
check "the second instance is still the old one" greets 4901 "ZDSQL second $(server_version "$current") ready"
check "service KalmoManager is active again" runs KalmoManager

say "Upgrading the second instance leaves the manager of the first alone"
manager_pid=$(pid KalmoManager)
pilot "$next" 1 second
check "the running server is the new one" greets 4901 "ZDSQL second $(server_version "$next") ready"
check "the manager never stopped" equal "$manager_pid" "$(pid KalmoManager)"

say "Installing under the name of an instance upgrades it"
pilot "$next" 2 second "$second" 4999
check "the running server is the new one" greets 4901 "ZDSQL second $(server_version "$next") ready"
check "its configuration kept its port" config_is "$second" 4901 second

say "What cannot work leaves no marker"
rm "$first/Install.log"
pilot "$next" 1 nobody
check "the trace says why" grep -q "no such instance" "$work/trace"
pilot "$next" 4 first
check "an unknown operation does nothing" absent "$first/Install.log"
check "the first instance goes on" greets 4900 "ZDSQL first $(server_version "$next") ready"

say "Nothing that is not its own"
check "an instance that another program starts is neither upgraded nor removed" wrapped_stays
check "an instance that is stopped and disabled keeps its directory and can be upgraded" asleep_is_found
check "a directory that could not be found again is refused" refuses 'could not be found again' 2 third '/srv/zd/a --b' 4902

say "Uninstall both instances, then the manager"
for name in first second kalmomanager; do
    directory=$first
    service=ZDCS-$name
    [ $name != second ] || directory=$second
    [ $name != kalmomanager ] || service=KalmoManager
    # An unattended uninstall does not stop a service first; under systemd its removal does.
    [ "$init" = systemd ] || "/etc/init.d/$service" stop
    pilot "$current" 3 "$name"
    check "the marker holds OK" marked "$directory"
    check "service $service is gone" unregistered "$service"
    if [ $name = kalmomanager ]; then
        check "its program is gone" absent "$first/kalmomanager"
    else
        check "its programs are gone" absent "$directory/kalmo"
        check "its logger is gone" absent "$directory/zdlogger"
        check "its libraries are gone" equal "" "$(find "$directory" -name 'tv*.so')"
        check "its configuration is left" test -s "$directory/ZDConf.ini"
        check "its databases are left" test -d "$directory/BDD/__system"
    fi
done
check "the list is empty" equal "No instance is installed on this machine." "$(LC_ALL=C "$current/kalmoinstall" --list)"
check "nothing answers any more" equal "" "$(TRIES=5 greeting 4900 || TRIES=5 greeting 4901)"

rm -rf "$work"
if [ "$failures" -gt 0 ]; then
    say "$failures checks failed"
    exit 1
fi
say "All of it works on a machine with $init."
