# Installing: every language from start to end, every kind of terminal, a second server, what is run.
# The form is told in story_test.cpp.

== Everywhere_FromStartToEnd
run: @install
$ server $VERSION
run next: @upgrade
$ server 26.0.3.0
run: @remove; @removed
$ unregistered ZDCS-ZDSQL && active KalmoManager && ! TRIES=5 greeting 4900
run: @licence; @manage => Down Enter*2; @toremove
    {RETRAIT|ZDSQL server manager} / {RETRAIT_ARRET} / {RETRAIT_SERVICE} / {RETRAIT_FICHIERS} / {OK}
$ unregistered KalmoManager
$ equal "./BDD/__system/kalmo.log ./INSTALL.LOG ./ZDConf.ini ./help/readme.txt" "$(cd /usr/local/ZDSQL; echo $(find . -type f | sort))"

== InFrench
with fr vt100
story Everywhere_FromStartToEnd

== InSpanish
with es xterm 132x50
story Everywhere_FromStartToEnd

# Of the program that is static.
== Static_EveryScreenInAnEmptyRoot
# Nothing is there but the program, a payload, /proc and /dev: the server's programs find no shell to be started by.
$ empty_root /srv/empty
$ cd /srv/dist/current && ! readelf -dl kalmoinstall | grep -E 'NEEDED|INTERP' && (($(stat -c %s kalmoinstall) <= 3 << 20))
$ equal "kalmoinstall $VERSION" "$(chroot /srv/empty /srv/dist/current/kalmoinstall --version)"
$ chroot /srv/empty /srv/dist/current/kalmoinstall --help | grep -q kalmoinstall.zip
$ printf '[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\nRepertoire=/srv/zd\n' >/srv/empty/orders
    strace -f --seccomp-bpf -qq -e trace=execve,open,openat -o /tmp/opened chroot /srv/empty /srv/dist/current/kalmoinstall /PILOT=/orders /DEBUG=/trace
    grep -F "/srv/zd/kalmomanager --INSTALLER 2>/dev/null: failed" /srv/empty/trace && test -x /srv/empty/srv/zd/kalmo &&
    ! sed '1,/execve(.*kalmoinstall"/d' /tmp/opened | grep -E '/lib.*[.]so'
run plain en|fr|es xterm|xterm-256color|xterm-kitty|alacritty|foot|st-256color|putty|ms-terminal|tmux-256color|screen|linux|vt100 by chroot /srv/empty: @asked; {ATTENTION} / {SANS_JOURNAL|/usr/local/ZDSQL/INSTALL.LOG} / {OK}
== Static_AsksForAccountsThatOnlyTheServicesOfTheMachineKnow
$ systemd-run --quiet --property=DynamicUser=yes --property=User=kfleet sleep 600; eventually getent passwd kfleet; ! grep kfleet /etc/passwd
run by strace -D -qq -e trace=open,openat -o /tmp/opened: @licence; @directory; @config => Tab*2 Backspace*4 0 Tab Enter
    {ATTENTION} / {COMPTE_INCONNU|0} / {OUI} {NON} => Tab Enter
    {NOM_SERVEUR} / * => Tab*4 Backspace kfleet Tab Enter
    @account => Tab*3 Enter
$ ! grep -F .so /tmp/opened
# Such a service may know the account in another spelling, and take so long that the window is resized meanwhile.
$ printf '#!/bin/sh\nkill -WINCH $PPID; sleep 0.2; echo "JDoe@plant.example:*:900:900::/:/bin/sh"\n' >/usr/local/bin/getent && chmod +x /usr/local/bin/getent
run: @licence; @directory; @config => Tab*2 Backspace*4 jdoe Tab Enter
    @account => Tab*3 Enter

== Everywhere_ASmallTerminalWillDo
with 60x16
run
    {TITRE_LICENCE} / ZDSQL SAMPLE SERVER - LICENCE AGREEMENT / 1/27... / I accept I refuse => Down*40 Tab Enter
    {REPERTOIRE} / /usr/local/ZDSQL / OK Cancel
    Server name / ZDSQL / TCP port / 4900 OK Cancel / System account that runs the server / root => Enter*3
    {TITRE_COMPTE} / {COMPTE} / Admin / {MOT_DE_PASSE} => Enter*3
    Telemetry sends technical data about the use of / [X]Send technical data about the use of this / server / OK Cancel => Enter*2
    {INSTALLE} / Administrator account: Admin / 1-2/4... / OK
$ server $VERSION
run next
    {TITRE_LICENCE} / * => Down*40 Tab Enter
    {TITRE_ACTION} / (X) {ACTION_MISE_A_JOUR} / * / OK Cancel => Enter*2
    {TITRE_MISE_A_JOUR} / ZDSQL server ZDSQL / OK Cancel => Enter*2
    Server: ZDSQL server ZDSQL / * / {MAJ_QUESTION} / Yes No => Tab*2 Down*9
    - KalmoManager, * / machine / 10-11/11 / {MAJ_QUESTION} / Yes No => Tab Enter
    {MAJ_FAITE} / OK
$ server 26.0.3.0
run
    {TITRE_LICENCE} / * => Down*40 Tab Enter
    {TITRE_ACTION} / (X) {ACTION_MISE_A_JOUR} / * / OK Cancel => Down*2 Enter*2
    {TITRE_DESINSTALLATION} / ZDSQL server ZDSQL / OK Cancel => Enter*2
    {RETRAIT|ZDSQL server ZDSQL} / [X] * / OK*
$ unregistered ZDCS-ZDSQL

== Everywhere_TheseCommandsAreRunAndNoOthers
# What was installed is on the disk before a program of the server, or the first service, starts.
run record: @install
$ equal 1 "$(cat /tmp/record.* | grep -c '^syncfs')"
$ asked="all; files ZDCS-*; about KalmoManager; about ZDCS-ZDSQL; loaded ZDCS-ZDSQL; about KalmoManager; "
    [ $init = systemd ] || asked=
    ran "$asked sh: /usr/local/ZDSQL/kalmomanager --INSTALLER 2>/dev/null; sh: /usr/local/ZDSQL/kalmo --INSTALLER 2>/dev/null"
$ eventually both_run && greeting 4900
run next record: @upgrade
$ equal 1 "$(cat /tmp/record.* | grep -c '^syncfs')"
$ case $init in
        systemd) ran "all; all --plain; about ZDCS-ZDSQL; files ZDCS-*; about KalmoManager; about KalmoManager; about KalmoManager;
            state KalmoManager; state ZDCS-ZDSQL; stop KalmoManager; state ZDCS-ZDSQL; stop ZDCS-ZDSQL;
            start KalmoManager; start ZDCS-ZDSQL" ;;
        *) ran "/etc/init.d/KalmoManager status; /etc/init.d/ZDCS-ZDSQL status;
            sh: /etc/init.d/KalmoManager stop >/dev/null 2>/dev/null; /etc/init.d/ZDCS-ZDSQL status;
            sh: /etc/init.d/ZDCS-ZDSQL stop >/dev/null 2>/dev/null;
            sh: /etc/init.d/KalmoManager start >/dev/null; sh: /etc/init.d/ZDCS-ZDSQL start >/dev/null" ;;
    esac
$ eventually both_run && greeting 4900
run record: @remove; @removed
$ equal 0 "$(cat /tmp/record.* | grep -c '^syncfs')"
$ case $init in
        systemd) ran "all; all --plain; about ZDCS-ZDSQL; files ZDCS-*; about KalmoManager; stop ZDCS-ZDSQL;
            --property=FragmentPath show ZDCS-ZDSQL; --property=SourcePath show ZDCS-ZDSQL; disable ZDCS-ZDSQL;
            stop ZDCS-ZDSQL; daemon-reload" ;;
        *) ran "sh: /etc/init.d/ZDCS-ZDSQL stop >/dev/null 2>/dev/null; sh: update-rc.d -f ZDCS-ZDSQL remove >/dev/null" ;;
    esac

== InitScripts_MayComplainButMustTellTheirProgram
run: @install
$ sed -i 's/^start() {/&\n :/' /etc/init.d/{ZDCS-ZDSQL,KalmoManager}
start: @licence; @action; @toupgrade; Server: * / Yes No
keep screen
end: @upgraded
$ sed -i 's/^start() {/&\n seq 40 >\&2/' /etc/init.d/{ZDCS-ZDSQL,KalmoManager}
start: @licence; @action; @toupgrade; Server: * / Yes No
same screen
end: @upgraded
# A name that is another one's as a script has it.
$ cp /etc/init.d/ZDCS-ZDSQL /etc/init.d/ZDCS-a_b
run: @another; {REPERTOIRE} / * => Backspace*15 srv/zd/x Enter
    @config => Backspace*5 a Space b Enter Backspace*4 4999 Enter*2
    {ATTENTION} / {CONFLIT_NOM|a b} / OK
    {NOM_SERVEUR} / a b / * => Tab Enter
$ rm /etc/init.d/ZDCS-a_b; sed -i "/^Program=/s/\"/'/g" /etc/init.d/ZDCS-ZDSQL; fate_of ZDCS-ZDSQL KalmoManager
run: @licence; @action; @toupgrade; Attention / {SANS_PROGRAMME|ZDSQL server ZDSQL} / OK
$ equal == "$(fate ZDCS-ZDSQL KalmoManager)"

== InitScripts_EndTheRunWhenTheKeyboardEndsThem
$ install first 4950; sed -i 's/^stop() {/&\n sleep 60/' /etc/init.d/ZDCS-first; remember
start: @remove => Enter
send \r
$ eventually pgrep -xf "sleep 60"
send \x03
end
$ unchanged && grep 'interrupted during: /etc/init.d/ZDCS-first stop' /tmp/trace

== AccountsAreAskedForAndMade
# A useradd that does not know -M, and somebody who is faster.
$ cd /srv/dist; cp /usr/sbin/useradd real
    printf '#!/bin/sh\ncase $2 in -M) exit 2; esac\n/srv/dist/real "$@"\nexit 9\n' >useradd; chmod 755 useradd
    mount --bind useradd /usr/sbin/useradd
run record: @licence; @directory
    @config => Tab*2 Backspace*4 KDaemon Tab Enter
    {ATTENTION} / {COMPTE_INCONNU|kdaemon} / Yes No => Tab Enter
    {NOM_SERVEUR} / ZDSQL / {PORT} / 4900 / {COMPTE_SYSTEME} / kdaemon / OK Cancel
    {ATTENTION} / {COMPTE_INCONNU|kdaemon} / Yes No
    @account => Backspace*5 chef Space "l'été" Space $x Enter pass Space wörd Enter*2
    @telemetry => Space Enter*2
    {INSTALLE} / {ADMIN|chef "l'été" $x|pass wörd} / OK
$ equal 'sh: /usr/sbin/useradd -s/bin/false -M kdaemon 2>/dev/null
    sh: /usr/sbin/useradd -s/bin/false kdaemon 2>/dev/null
    sh: /usr/local/ZDSQL/kalmomanager --INSTALLER 2>/dev/null
    sh: /usr/local/ZDSQL/kalmo --INSTALLER --CREATEUSER "chef \"l'"'"'été\" \$x" --PWDC HEX 2>/dev/null' "$(commands | grep '^sh: /')"
$ name="chef \"l'été\" \$x"
    equal "OK NO NO" "$(echo $(login 4900 "$name" "pass wörd"; login 4900 "$name" pass; login 4900 Admin ""))"
$ equal $'DaemonUser = kdaemon\nACTIVE = 0' "$(grep -E "DaemonUser|ACTIVE" /usr/local/ZDSQL/ZDConf.ini)"
$ equal "kdaemon /bin/false" "$(stat -c %U /proc/$(pid ZDCS-ZDSQL)) $(getent passwd kdaemon | cut -d: -f7)" && ! grep wörd /tmp/trace

== ASecondServerGetsItsOwnNamePortAndDirectory
$ install first 4900; fate_of ZDCS-first KalmoManager
run: @another; {REPERTOIRE} / * => Backspace*15 srv/zd/second Enter
    @config => Backspace*5 FIRST Enter*3
    {ATTENTION} / {CONFLIT_NOM|FIRST} / OK
    {NOM_SERVEUR} / FIRST / * => Tab*2 Backspace*5 second Enter*3
    {ATTENTION} / {CONFLIT_PORT|4900|ZDSQL server first} / OK
    {NOM_SERVEUR} / second / {PORT} / 4900 / * => Tab*3 Backspace*4 4951 Enter*2
    @account
    @telemetry
    @installed
$ equal "ZDSQL second $VERSION ready" "$(greeting 4951)" && equal "ZDSQL first $VERSION ready" "$(greeting 4900)"
$ equal == "$(fate ZDCS-first KalmoManager)"
# The directory of a server means that server, however it is written.
run next /RECORD=/run/orders: @another; {REPERTOIRE} / * => Backspace*15 srv//zd/first/../second/ Enter
    Server: ZDSQL server second / Port: 4951 / Directory: /srv/zd/second/ / * / Yes No
    @upgraded
$ equal $'[PILOTAGE]\nMAJ=1\n[SERVEUR]\nServeur=second' "$(grep -v ^: /run/orders)"
$ equal "ZDSQL second 26.0.3.0 ready" "$(greeting 4951)"

== Everywhere_WhatIsRecordedIsRepeatedUnattended
run fr /RECORD=/run/install.ini: @licence; @directory; @config
    @account => Backspace*5 ch"ef Enter secret Enter*2
    @telemetry => Space Enter*2
    {INSTALLE} / {ADMIN|ch"ef|secret} / OK
$ installed >/run/install.state; echo before >/run/upgrade.ini; ln /run/upgrade.ini /run/other.ini
run next es /RECORD=/run/upgrade.ini: @upgrade
$ installed >/run/upgrade.state
run /RECORD=/run/remove.ini: @remove; @removed
$ installed >/run/remove.state
run /RECORD=/run/manager.ini: @licence; @manage => Down Enter*2; @toremove
    {RETRAIT|ZDSQL server manager} / * / {OK}
$ equal ": kalmoinstall $VERSION, TIME : répète une installation
    : Ce que le travail sans opérateur ne règle pas :
    : Compte système qui exécute le serveur : \"root\"
    : Télémétrie : Non
    : Compte administrateur : \"ch\\\"ef\"
    $(printf '[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=ZDSQL\nRepertoire=/usr/local/ZDSQL\nPort=4900')
    : kalmoinstall 26.0.3.0, TIME: repite una actualización
    : Lo que el trabajo sin operador no configura:
    : Telemetría: No
    $(printf '[PILOTAGE]\nMAJ=1\n[SERVEUR]\nServeur=ZDSQL')
    : kalmoinstall $VERSION, TIME: repeats an uninstallation
    : Without systemd, stop the server before: an unattended run does not.
    $(printf '[PILOTAGE]\nMAJ=3\n[SERVEUR]\nServeur=ZDSQL')" \
        "$(sed -E 's/[0-9]{4}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2}/TIME/' /run/{install,upgrade,remove}.ini)"
$ equal $'MAJ=3\nServeur=kalmomanager' "$(grep = /run/manager.ini)" && unregistered KalmoManager
$ equal "600 root 1" "$(stat -c '%a %U %h' /run/{install,upgrade,remove}.ini | uniq)" && equal before "$(cat /run/other.ini)"
$ repeat() { /srv/dist/$2/kalmoinstall /PILOT=/run/$1.ini /RECORD=/none/ignored /DEBUG=/tmp/trace; installed | diff /run/$1.state -; }
    fresh; repeat install current && repeat upgrade next && service_stop ZDCS-ZDSQL && repeat remove current

== Pictures
# README's, with the same folders beside the proposed one everywhere. The build target "pictures_install" draws them.
$ mount -t tmpfs kalmo /usr/local && mkdir /usr/local/{bin,lib,share}
start
picture install-licence.svg
walk: @licence
picture install-directory.svg
walk: @directory
picture install-settings.svg
walk: @config; @account; @telemetry
picture install-result.svg
end: @installed
start next: @licence; @action; @toupgrade
picture upgrade.svg
run: @licence; @action => Tab*2 Enter
start: @remove
picture uninstall.svg
end: @removed
$ systemctl disable --now KalmoManager; umount -l /usr/local

== Everywhere_KernelsThatLackNewSystemCalls
run by env ASAN_OPTIONS=detect_leaks=0 prlimit --nofile=1024 strace -D -f -b execve -qq -o /tmp/record -e trace=getrandom,clone3,close_range -e inject=getrandom,clone3,close_range:error=ENOSYS
    @licence; @directory; @config
    @account => Backspace*5 chef Enter pass Enter*2
    @telemetry; {INSTALLE} / {ADMIN|chef|pass} / OK
$ equal "OK NO" "$(echo $(login 4900 chef pass; login 4900 chef no))" && grep -q getrandom.*INJECTED /tmp/record
