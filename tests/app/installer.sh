#!/bin/bash
# The program itself, run unattended on a copy of the machine's files. The server's programs in the payloads are scripts
# that record how they are called; ZIP files come from an independent archiver.
#
#   installer.sh INSTALLER PASSWORD-PROGRAM CASE     a function below with "_" in its name, in testkit/in_private_root
# shellcheck disable=SC2016,SC2059,SC2086,SC2317 # what the table says, as it says it
set -eE
[[ -n ${KALMO_PRIVATE_ROOT-} ]] || { echo "$0: it would change this machine" >&2; exit 1; }
trap 'echo "line $LINENO: $BASH_COMMAND"; cat trace output 2>/dev/null' ERR
installer=$1 archive_password=$2
zd=/tmp/zd script=/etc/init.d/ZDCS-first
manual=$(realpath "${BASH_SOURCE%/*}/../../docs/man") json_answer=$(realpath "${BASH_SOURCE%/*}/../../testkit/json_answer")

# What must hold is a command that succeeds; each one that fails ends the case.
not() { ! "$@"; }
none() { [[ ! -e $1 && ! -L $1 ]]; }
is() { [[ $1 == "$2" ]] || { printf 'expected: %s\nis:       %s\n' "$1" "$2"; false; }; }
told() { grep -qaF -- "$1" trace; }
marked() { is OK "$(cat "${1:-$zd}/Install.log")"; }

# A machine without an instance, with a payload of ./tree beside the installer in the current directory: a server that
# records how it is called and registers its service.
fresh() {
    rm -rf /tmp/run $zd /tmp/other* $script /etc/init.d/KalmoManager /usr/bin/kalmo
    rm -f /bin/systemctl # in a changed root it succeeds without doing anything
    mkdir -p /tmp/run/tree/lib
    cd /tmp/run
    cp "$installer" .
    cat >tree/kalmo <<'END'
#!/bin/sh
echo "kalmo $*" >>/tmp/run/calls
printf '#!/bin/sh\nName="first"\nProgram="%s --service"\necho "$1" >>/tmp/run/calls\n[ "$1" != status ] || exit 0\n' \
    "$0" >/etc/init.d/ZDCS-first
chmod 755 /etc/init.d/ZDCS-first
END
    printf '#!/bin/sh\necho "kalmomanager $*" >>/tmp/run/calls\nexit 255\n' >tree/KalmoManager
    echo -n "to be accepted" >tree/LICENSE.TXT
    echo -n text >"tree/lib/a b.txt"
    pack
}
pack() { rm -f kalmoinstall.zip; (cd tree && zip -qXDr ../kalmoinstall.zip .); }
libraries() { touch $zd/tvzdsrv.so $zd/tvsqlsrv.so; }

# Orders by name or as they are; a run with a trace that says nothing else.
orders() {
    local install="[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\nRepertoire=$zd\nPort=4950\n"
    case $1 in
        install) printf "$install" ;;
        into) printf '[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=%s\nRepertoire=%s\n' "${3-second}" "$2" ;;
        upgrade) printf '[PILOTAGE]\nMAJ=1\n[SERVEUR]\nServeur=%s\n' "${2-first}" ;;
        remove) printf '[PILOTAGE]\nMAJ=3\n[SERVEUR]\nServeur=%s\n' "${2-first}" ;;
        *) printf "$1" ;;
    esac
}
run() { ./kalmoinstall "$@" >output 2>&1; }
pilot() {
    orders "$@" >pilot.ini
    rm -f trace
    run /PILOT=pilot.ini /DEBUG=trace
    is "" "$(cat output)"
}

options_select_the_parameter_file() {
    local options
    fresh
    orders install | tee right.ini >.hidden.ini
    orders '[PILOTAGE]\nMAJ=4\n' >wrong.ini
    for options in /pilot=right.ini "/PILOT=wrong.ini x /PILOT=../run/right.ini" /PILOT=.hidden.ini; do
        rm -rf $zd $script
        run $options
        marked
    done
    rm -rf $zd
    for options in /PILOT=wrong.ini "/PILOT=right.ini /PILOT=wrong.ini" /PILOT=none.ini /PILOT= /DEBUG=trace PILOT=right.ini ""; do
        run $options
        none $zd
    done
    run --version
    [[ $(cat output) == "kalmoinstall 25."* ]]
}

the_manual_is_true() {
    local section key default keys text="" told="" left_out
    options() { grep -oE '(/[A-Z]+=|--[a-z]+)' | sort -u; }
    fresh
    run --help
    is "$(options <output)" "$(mandoc -Tascii "$manual/kalmoinstall.8" | sed "s/.\x08//g" | options)"
    # The keys that the program reads, each in its section.
    keys=$(awk '/^\.Ss Section /{s = $3} /^\.It Cm /{k = $3} /^Default: /{sub("[.;]$", "", $2); print s, k, $2}' "$manual/kalmoinstall.ini.5")
    while read -r section key default; do
        [[ $text == *"[$section]"* ]] || text+="[$section]\n"
        text+="$key=some $key\n" told+=" $key=\"some $key\""
    done <<<"$keys"
    pilot "$text"
    is "orders:$told" "$(sed -n 's/.*  orders:/orders:/p' trace)"
    # An order without a key does what it does with the key's default.
    without() { orders install | sed "s/^$1=.*/$2/"; }
    did() { fresh; pilot "$1"; { ls $zd; cat $zd/ZDConf.ini calls; } 2>&1 || true; }
    while read -r -u 3 section key default; do
        left_out=$(did "$(without "$key" "")")
        is "$(did "$(without "$key" "$key=${default#none}")")" "$left_out"
    done 3<<<"$keys"
    # What the server's programs get to see.
    fresh
    echo 'echo "$PATH" >/tmp/run/path' >>tree/kalmo
    pack
    PATH=$PATH:/tmp pilot install
    grep -qxF ".Pa $(cat path)" "$manual/kalmoinstall.8"
}

it_tells_what_is_missing_of_a_terminal() {
    local command text step # "script" makes a terminal
    fresh
    while IFS=@ read -r -u 3 command text step; do
        rm -f trace
        sh -c "$command"
        is "" "$(cat output)"
        grep -qx "$text" errors
        told "open the screen: failed: $step"
    done 3<<'END'
TERM=xterm ./kalmoinstall /DEBUG=trace </dev/null >output 2>errors@kalmoinstall needs a terminal.@no terminal
script -qec 'TERM=xterm ./kalmoinstall /DEBUG=trace 2>errors </dev/null' /dev/null >output </dev/null@kalmoinstall needs a terminal.@no terminal
script -qec 'TERM=dumb ./kalmoinstall /DEBUG=trace 2>errors' /dev/null >output </dev/null@"dumb"@no cursor on the terminal "dumb"
script -qec 'TERM= ./kalmoinstall /DEBUG=trace 2>errors' /dev/null >output </dev/null@It is not known .*: the variable TERM is not set.@the variable TERM is not set
END
    rm -f trace
    TERM=$(printf 'linux/\033[J%0100d' 1) timeout 20 script -qec './kalmoinstall /DEBUG=trace' /dev/null </dev/null >output &
    until told "$(printf 'terminal: "linux/\\x1B[J%055d" is not known here, shown as linux' 0)"; do sleep 0.05; kill -0 $!; done
    kill $!
}

orders_are_read_once_and_told_one_by_one() {
    local text
    fresh
    while IFS=@ read -r -u 3 text why; do
        pilot "$text"
        none $zd
        told "$why"
    done 3<<END
@MAJ: the parameter file is empty
\xEF\xBB\xBF[PILOTAGE]\nMAJ=2\n@byte-order mark of UTF-8
\xFE\xFF\x00[@byte-order mark of UTF-16 big-endian
[SERVEUR]\nServeur=first\nRepertoire=$zd\n@MAJ: missing in the parameter file
[PILOTAGE]\nMAJ=0\n@MAJ: no operation of that number
[PILOTAGE]\nMAJ=7\n@MAJ: no operation of that number
[PILOTAGE]\nMAJ=3\n[SERVEUR]\nServeur=a\x1B"\\\\\\x7F\n@Serveur="a\x1B\"\\\\\\x7F" Repertoire missing
[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\n@Repertoire
[PILOTAGE]\nMAJ=2\n[SERVEUR]\nRepertoire=$zd\n@Serveur
[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\nRepertoire=tmp/zd\n@Repertoire
[PILOTAGE]\nMAJ=2\n[SERVEUR]\nRepertoire=$zd\nServeur=$(printf '%0101d' 1)\n@Serveur
[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\nRepertoire=$zd/$(printf '%0252d' 1)\n@Repertoire
upgrade@no such instance
remove@no such instance
END
    pilot into $zd "$(printf '%0100d' 1)"
    marked
    fresh
    pilot install
    told 'kalmoinstall 25.0.98.0: unattended run, parameter file "./pilot.ini"'
    told 'orders: MAJ="2" Serveur="first" Repertoire="/tmp/zd" Port="4950"'
    run /PILOT=none.ini /DEBUG=trace
    told 'parameter file "./none.ini": failed: not found'
    run /PILOT=/tmp /DEBUG=trace
    told 'parameter file "/tmp": failed: a directory'
    ln -sf /proc/self/mem pilot.ini
    run /PILOT=pilot.ini /DEBUG=trace
    told 'read parameter file "./pilot.ini": failed ('
    # Closed descriptors: the trace is not what the programs write to.
    rm pilot.ini trace
    ./kalmoinstall /PILOT=none.ini /DEBUG=trace <&- >&- 2>&-
    told "failed: not found"
    # What the file says while the run waits for another one is not its order.
    orders upgrade >pilot.ini
    rm trace
    exec 9>/run/kalmoinstall.lock
    flock 9
    ./kalmoinstall /PILOT=pilot.ini /DEBUG=trace 9>&- &
    for _ in {1..200}; do ! grep -q waiting trace 2>/dev/null || break; sleep 0.05; done
    orders remove >pilot.ini
    exec 9>&-
    wait $!
    marked
    test -e $zd/kalmo
}

names_that_reach_other_units_are_refused() {
    local name
    fresh
    printf '#!/bin/sh\necho "$*" >>/tmp/run/units\n' >/bin/systemctl
    chmod 755 /bin/systemctl
    for name in "x systemd-journald" "*" "a?b" "a/b" "[a-z]" '"a"' a@ café; do
        pilot into $zd "$name"
        none $zd
        told "no name that a service can have"
    done
    grep -q -- --no-legend units
    not grep show units
}

what_is_not_ours_is_refused_and_stays_as_it_is() {
    local prepare words why before long
    local nice='not of this product: "/usr/bin/nice --adjustment=5 /tmp/zd/kalmo --service"'
    long=$(printf 'd%.0s' {1..140})
    now() { { find $zd /tmp/other* /tmp/d* /etc/init.d -type f -exec md5sum {} +; cat calls; } 2>&1 || true; }
    wrap() { sed -i "s,Program=\",&$1 ," $script; }
    # A command that does not say where it runs.
    cd_first() { sed 's,Program=.*,Program="/bin/sh -c cd...",' $script; }
    while IFS=@ read -r -u 3 prepare words why; do
        fresh
        pilot install
        libraries
        eval "$prepare"
        before=$(now)
        eval "pilot $words"
        is "$before" "$(now)"
        told "$why"
    done 3<<END
wrap "/usr/bin/nice --adjustment=5"@upgrade@$nice
wrap "/usr/bin/nice --adjustment=5"@remove@$nice
wrap "/usr/bin/nice --adjustment=5"@into $zd@$nice
wrap "/usr/bin/env LANG=C"@upgrade@not of this product
wrap "/usr/bin/env LANG=C"@remove@not of this product
wrap nice@remove@not of this product
wrap /usr/bin/missing@remove@not of this product
ln -s $zd/kalmo /usr/bin/kalmo; sed -i s,$zd/,/usr/bin/, $script@upgrade@not of this product
cd_first >x; cp x $script@into $zd@ZDCS-first runs a program that is not of this product
cp /bin/sleep $zd/kalmomanager; $zd/kalmomanager 3 & cd_first >/etc/init.d/KalmoManager@upgrade@KalmoManager runs a program that is not
sed -i 's,Program=",&/tmp/$long,' $script@remove@not of this product
sed 's,kalmo --service",kalmo,' $script >/etc/init.d/KalmoManager@remove kalmomanager@KalmoManager runs a program that is not
rm -r $zd@upgrade@its directory $zd/ is gone
true@into /tmp//zd/.@is the directory of the instance ZDCS-first
true@into "/tmp/other --x"@could not be found again
true@into '/tmp/other"x'@could not be found again
true@into /tmp/${long:0:114}@could not be found again
true@into /tmp/other "it's"@no name that a service can have: "it's"
END
    # One that just fits is installed, upgraded and marked where it lies.
    fresh
    pilot into $zd/"${long:0:109}" first
    rm $zd/"${long:0:109}"/Install.log
    pilot upgrade
    marked $zd/"${long:0:109}"
}

what_the_keyboard_ends_ends_the_run() {
    local tool why
    fresh
    printf '#!/bin/sh\nread -r line && echo "read $line" >>/tmp/run/calls\nkill -INT $$\n' >tree/KalmoManager
    pack
    orders install >pilot.ini
    echo typed | ./kalmoinstall /PILOT=pilot.ini /DEBUG=trace
    told "interrupted during: $zd/kalmomanager --INSTALLER"
    none calls # nobody's input was read, and nothing ran behind it
    none $zd/Install.log

    # A tool of the boot sequence, which cron's path does not lead to.
    while IFS=@ read -r -u 3 tool why; do
        fresh
        pilot install
        libraries
        mkdir $zd/tvmore.so
        printf '#!/bin/sh\n%s\n' "$tool" >/usr/sbin/update-rc.d
        orders remove >pilot.ini
        rm trace
        PATH=/bin ./kalmoinstall /PILOT=pilot.ini /DEBUG=trace 2>/dev/null
        told "$why"
        not told tvmore.so # a directory is no file to delete
        case $tool in
            kill*) test -e $zd/kalmo; none $zd/Install.log ;;
            *) none $zd/kalmo; marked ;;
        esac
    done 3<<'END'
kill -QUIT $$@interrupted during: update-rc.d -f ZDCS-first remove
echo 'no links' >&2; exit 3@update-rc.d -f ZDCS-first remove >/dev/null: exit code 3: no links
END
}

a_marker_never_survives_a_failed_run() {
    fresh
    mkdir $zd
    echo -n OK >$zd/Install.log
    touch $zd/BDD # no directory
    pilot install
    none $zd/Install.log
    rm $zd/BDD
    pilot install
    marked
    truncate -s -30 kalmoinstall.zip
    pilot upgrade
    none $zd/Install.log
    told "open payload /tmp/run/kalmoinstall.zip: failed"
    # One that cannot be removed ends the run before it begins.
    pack
    mkdir -p $zd/Install.log/x
    rm calls
    pilot upgrade
    none calls
    told "marker of an earlier run"
}

it_installs_with_the_modes_and_calls_of_the_server() {
    local called=$'kalmomanager --INSTALLER\nkalmo --INSTALLER' name
    fresh
    (umask 077; pilot install)
    marked
    is 4755 "$(stat -c %a $zd/kalmomanager)" # its stored name has other letters
    for name in kalmo "lib/a b.txt" lib BDD; do is 755 "$(stat -c %a "$zd/$name")"; done
    none $zd/LICENSE.TXT
    is $'[INIT]\nDBRootPath = /tmp/zd/BDD/\nAccessPort = 4950\nName = first' "$(cat $zd/ZDConf.ini)"
    is "$called" "$(cat calls)" # the manager's failure does not count in an unattended run
    is 600 "$(stat -c %a trace)"
    not told "$("$archive_password")"
    # At no moment may others write what the payload brings.
    rm -r $zd $script
    chmod -R a+rwX tree
    pack
    ASAN_OPTIONS=detect_leaks=0 strace -qq -o modes -e trace=fchmod,openat,mkdir,mkdirat ./kalmoinstall /PILOT=pilot.ini
    grep -qE 'fchmod.*, 0755\)' modes
    not grep -E '(CREAT|fchmod|mkdir).*, 0[0-7]*([2367][0-7]|[0-7][2367])\)' modes
    # A directory that means something to the shell.
    rm calls
    pilot into "$zd/it's; touch pwned #"
    none pwned
    is "$called" "$(cat calls)"
}

names_that_leave_the_directory_are_refused() {
    local name
    fresh
    for name in a/../../outside /tmp/outside '..\outside' C:/outside; do
        rm -rf $zd kalmoinstall.zip
        python3 -c 'import sys, zipfile; zipfile.ZipFile("kalmoinstall.zip", "w").writestr(sys.argv[1], "x")' "$name"
        pilot install
        none /tmp/outside
        none $zd/C:
        told "extract: failed"
    done
}

links_in_the_way_are_replaced_and_busy_programs_waited_for() {
    fresh
    mkdir $zd
    echo untouched >/tmp/outside
    ln -s /tmp/outside $zd/kalmomanager
    ln /tmp/outside $zd/ZDConf.bak
    cp /bin/sleep $zd/kalmo
    $zd/kalmo 1 &
    pilot install
    marked
    is untouched "$(cat /tmp/outside)"
    not test -L $zd/kalmomanager
    head -n 1 $zd/kalmo | grep -q '^#!/bin/sh'
}

the_trace_goes_neither_through_a_link_nor_over_an_earlier_one() {
    fresh
    orders '[PILOTAGE]\nMAJ=4\n' >pilot.ini
    echo earlier >trace
    echo secret >secret
    ln -s secret link
    run /PILOT=pilot.ini /DEBUG=link /DEBUG=trace
    [[ $(cat trace) == earlier$'\n'20* ]]
    run /PILOT=pilot.ini /DEBUG=link
    is secret "$(cat secret)"
    mkfifo pipe
    run /PILOT=pilot.ini /DEBUG=pipe
}

it_lists_what_is_installed_in_columns_and_in_json() {
    local table gone
    json() { ./kalmoinstall --json --list | "$json_answer" list "$@"; }
    service() { printf "#!/bin/sh\nProgram=\"$2\"\nexit $3\n" >"/etc/init.d/$1"; chmod "${4-755}" "/etc/init.d/$1"; }
    fresh
    export LC_ALL=C.UTF-8
    is "Aucune instance n'est installée sur cette machine." "$(LC_ALL=fr_FR ./kalmoinstall --list)"
    is $'scripts\n[]' "$(json --get init --get instances)"
    pilot install # its script says that it runs, the program tells no version
    mkdir -p /tmp/other/日本
    cp kalmoinstall /tmp/other/日本/kalmo
    printf '[INIT]\nName=second\n' >/tmp/other/日本/ZDConf.ini
    service ZDCS-日本 "/tmp/other/日本/kalmo --service" 3
    service ZDCS-x "/usr/bin/nice --adjustment=5 $zd/kalmo" 1
    service $'ZDCS-\e[2J\n\xc2\x9b\xe2\x80\xae\xff' /tmp/gone/kalmo 0 644
    service KalmoManager $zd/kalmomanager 0
    table=$(./kalmoinstall --list)
    is "$(LC_ALL=C sort <<END
Name                 Port  Version    State    Directory
first                4950  -          running  $zd/
日本                 4900  25.0.98.0  stopped  /tmp/other/日本/
x *                  -     -          failed   /usr/bin/
\x1B[2J | \x9B?\xFF  -     -          unknown  /tmp/gone/
END
)" "$(head -n 5 <<<"$table" | LC_ALL=C sort)"
    is "kalmomanager         -     -          running  $zd/" "$(sed -n 6p <<<"$table")"
    [[ $(sed -n 7p <<<"$table") == "* runs a program"* ]]
    is manager "$(json --get instances.4.kind)"
    not grep -qP '[\x00-\x09\x0b-\x1f\x7f-\x9f]' <(./kalmoinstall --list --json)
    # Nobody needs to be root. An answer that does not arrive is a failure.
    is "$table" "$(setpriv --reuid 65534 --clear-groups ./kalmoinstall --list)"
    unheard() { local status=0; "$@" || status=$?; ((status == 1)); }
    unheard ./kalmoinstall --list >/dev/full
    exec 7> >(:)
    gone=$!
    while kill -0 $gone; do sleep 0.05; done 2>/dev/null
    unheard ./kalmoinstall --list --json >&7
    # Nor is a machine empty whose systemd tells nothing.
    printf '#!/bin/sh\n[ "$*" = "--no-pager --no-legend" ]\n' >/bin/systemctl
    chmod 755 /bin/systemctl
    unheard ./kalmoinstall --list --json >output 2>errors
    is "" "$(cat output)"
    grep -q "systemctl does not tell" errors
}

"$3"
