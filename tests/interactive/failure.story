# What goes wrong is told, and the terminal is left in order. Whoever gives up leaves the machine as it was.
# The form is told in story_test.cpp.

== NothingBeginsWithoutRightsAndPayload
$ remember
run by setpriv --reuid=65534 --regid=65534 --clear-groups: Attention / {PAS_ROOT} / OK
$ unchanged && cd /srv/dist/current && mv kalmoinstall.zip /run && remember
run: Attention / {DONNEES} / OK
$ unchanged && cd /srv/dist/current && cp /run/kalmoinstall.zip . && truncate -s -30 kalmoinstall.zip && remember
run: Attention / {DONNEES} / OK
$ unchanged && cd /srv/dist/current && cp /run/kalmoinstall.zip . && zip -qd kalmoinstall.zip license.txt && remember
run: Attention / {DONNEES} / OK
# A licence of more than 4 MiB.
$ unchanged && cd /srv/dist/current && yes | head -c 4194305 >license.txt; zip -q kalmoinstall.zip license.txt && remember
run: Attention / {DONNEES} / OK
$ unchanged

== AnInstallationTellsWhatWentWrong
# Of the codes of the server's programs 255 alone is a failure. The log is shown whole.
$ mkdir /usr/local/ZDSQL; cd /usr/local/ZDSQL; echo 255 >kalmomanager.fail; seq -f 'line %g é' 40 >>kalmomanager.fail
run: @asked; Attention / kalmomanager was told to end with 255 / line 1 é / line 2 é / * => Tab PageDown*9
    Attention / * / line 39 é / line 40 é / 32-41/41 / OK => Tab Enter
$ unregistered ZDCS-ZDSQL
$ fresh; mkdir /usr/local/ZDSQL; echo 255 >/usr/local/ZDSQL/kalmo.fail
run: @asked; Attention / * / systemctl restart KalmoManager: ok / kalmo was told to end with 255 / OK
$ active KalmoManager && unregistered ZDCS-ZDSQL
$ fresh; mkdir /usr/local/ZDSQL; cd /usr/local/ZDSQL; echo 254 >kalmo.fail; echo 1 >kalmomanager.fail
run: @install
$ unregistered KalmoManager && unregistered ZDCS-ZDSQL
# A server that cannot have its port.
$ fresh; python3 -m http.server 4900 >/dev/null 2>&1 & echo $! >/tmp/web; eventually listens 4900
run: @asked
    Attention / * / ZDCS-ZDSQL has ended*port 4900 is another program's / OK
$ kill $(cat /tmp/web); rm /tmp/web
# Accounts that useradd refuses, or would take for an option, and that the server then does not find.
fresh
run: @licence; @directory; @config => Tab*2 Backspace*4 a:b Tab Enter; Attention / {COMPTE_INCONNU|a:b} / Yes No; @account
    @telemetry
    Attention / {COMPTE_NON_CREE|a:b} / OK
    Attention / * / no such account: a:b / OK
$ grep -q 'DaemonUser = a:b' /usr/local/ZDSQL/ZDConf.ini && grep -q 'useradd.*exit code' /tmp/trace
fresh
run: @licence; @directory; @config => Tab*2 Backspace*4 -h Tab Enter; Attention / {COMPTE_INCONNU|-h} / Yes No; @account
    @telemetry
    Attention / {COMPTE_NON_CREE|-h} / OK
    Attention / * / no such account: -h / OK
$ ! grep -q 'useradd.*exit code' /tmp/trace
# A directory that cannot be created, an owner that cannot be set.
fresh
run: @licence; @directory => Backspace*15 proc/zd Enter; @config; @account; @telemetry
    Attention / /proc/zd/: No such file or directory / {REPERTOIRE_NON_CREE} / OK
$ absent /usr/local/ZDSQL/kalmo
run by env ASAN_OPTIONS=detect_leaks=0 strace -D -qq -o/dev/null -e inject=chown,lchown,fchown,fchownat:error=EPERM: @asked
    Attention / Operation not permitted / OK
$ cd /usr/local/ZDSQL; test -e kalmomanager && absent ZDConf.ini
# What would not fit into the commands of the server's programs is refused where it is chosen, and so is a directory
# that would be cut when it is read.
fresh
run: @licence; @directory => Backspace*15 srv/zd/<237d> Enter
    *Attention / The path of the directory / * / OK
    {REPERTOIRE} / * => Backspace*245 srv/zd/a;b Enter
    *Attention / A server in the directory / */srv/zd/a;b/ / could not be found again*OK
    {REPERTOIRE} / /srv/zd/a;b / * => Tab*3 Enter
$ absent /srv/zd/a*
run: @licence; @directory; @config; @account => Enter <90a> Enter*2
    {ATTENTION} / {COMPTE_TROP_LONG|3} / OK
    {TITRE_COMPTE} / * => Tab*3 Backspace*2 Enter*2
    @telemetry
    {INSTALLE} / * / OK
$ active ZDCS-ZDSQL

== TheLicenceMayBeginWithAMarkAndADeathLeavesNothingOfIt
$ cd /srv/dist/current; printf '\xEF\xBB\xBFAgree.' >LICENSE.TXT
    zip -qd kalmoinstall.zip license.txt; zip -q kalmoinstall.zip LICENSE.TXT
run: {TITRE_LICENCE} / Agree. / {ACCEPTER} {REFUSER}; @directory => Tab*3 Enter
# Each read of the payload takes a while.
launch by env ASAN_OPTIONS=detect_leaks=0 strace -D -qq -o/dev/null -P /srv/dist/current/kalmoinstall.zip -e inject=pread64:delay_exit=300000
$ eventually compgen -G '/tmp/kalmoinstall.*'
signal 15
ends 143
$ ! ls /tmp | grep kalmoinstall

== ABusyProgramIsWaitedFor
# Keys that are pressed meanwhile do not close the result.
$ busy /usr/local/ZDSQL
start: @asked => Enter
send \r until Installing the server
send \r\r\r
$ soon_idle
end: @installed
$ fresh; busy /usr/local/ZDSQL
run: @asked; Attention / /usr/local/ZDSQL/zdlogger: Text file busy / {FICHIER_NON_CREE|zdlogger} / OK
# The terminal gets another size meanwhile. It has it twice afterwards, which draws everything anew.
$ fresh; busy /usr/local/ZDSQL
start 100x30: @asked => Enter
send \r until Installing the server
resize 80x24
$ soon_idle
walk: @installed => Tab
keep screen
settle 80x30
settle 80x24
same screen
end: @installed => Tab Enter
# Whoever does not want to wait gets a terminal in order back.
$ fresh; busy /usr/local/ZDSQL
start: @asked => Enter
send \r until Installing the server
send \x03
ends 130

== WhatIsNotOursIsRefusedAndStaysAsItIs
$ install first 4950 && wrapped; remember
run: @licence; @action; @toupgrade
    {ATTENTION} / The service / "ZDSQL server first" / * / /usr/bin/nice *=5 /srv/zd/first/kalmo * / OK
run: @remove; {ATTENTION} / The service / "ZDSQL server first" / * / /usr/bin/nice *=5 /srv/zd/first/kalmo * / OK
run: @another; {REPERTOIRE} / * => Backspace*15 srv/zd/first Enter
    *{ATTENTION} / The service / "ZDSQL server first" / * / /usr/bin/nice *=5 /srv/zd/first/kalmo * / OK
    {REPERTOIRE} / * => Tab*3 Enter
$ unchanged
$ fresh; install first 4950; rm -r /srv/zd/first; remember
run: @licence; @action; @toupgrade; {ATTENTION} / {REPERTOIRE_PERDU|ZDSQL server first|/srv/zd/first/} / OK
$ unchanged
# Nobody has loaded it, and still it has its name, in whatever way that is written.
$ fresh; install first 4950; systemctl disable --now ZDCS-first; remember
run: @another; {REPERTOIRE} / * => Backspace*15 srv/zd/x Enter; @config => Backspace*5 Space FIRST Enter*3
    {ATTENTION} / {CONFLIT_NOM|FIRST} / OK
    {NOM_SERVEUR} / * => Tab Enter
run by env TMPDIR=/none: {ATTENTION} / {DOSSIER_TEMPORAIRE|/none|No such file or directory} / OK
$ unchanged

== GivingUpChangesNothing
# At every question.
$ remember; files usr root >/run/system
give up: @licence; @directory; @config => Tab*2 Backspace*4 kdaemon Tab Enter
    {ATTENTION} / {COMPTE_INCONNU|kdaemon} / {OUI} {NON} => Enter => Tab Enter Tab Enter
    @account
    @telemetry
$ files usr root | diff /run/system - && install first 4950; remember
give up: @another; {REPERTOIRE} / * => Enter => Tab*3 Enter; @config => Tab*2 Backspace*4 kdaemon Tab Enter
    {ATTENTION} / {COMPTE_INCONNU|kdaemon} / {OUI} {NON} => Enter => Tab Enter Tab Enter
    @account
    @telemetry
give up: @another; {REPERTOIRE} / * => Backspace*15 srv/zd/first Enter => Tab*3 Enter; @telemetry
    Server: ZDSQL server first / * => Enter => Tab Enter
give up: @licence; @action; @toupgrade; @telemetry; Server: ZDSQL server first / * => Enter => Tab Enter
give up: @remove
# The manager alone is left.
$ service_stop ZDCS-first; rm /etc/systemd/system/ZDCS-first.service; systemctl daemon-reload; remember
give up: @licence; @manage => Down Enter*2; @toremove

== AHangUpAtAQuestionChangesNothing
$ remember
hang up 129: @asked
hang up 0 by env --ignore-signal=HUP: @asked
$ install first 4950; remember
hang up 129: @licence; @action; @toupgrade; @telemetry; Server: *
hang up 129: @remove

== AHangUpDoesNotEndWorkThatHasBegun
# A program is waited for meanwhile.
with /RECORD=/run/orders
$ busy /usr/local/ZDSQL
start: @asked => Enter
send \r until Installing the server
$ soon_idle
unplug 0
$ greeting 4900 && active ZDCS-ZDSQL && active KalmoManager && busy /usr/local/ZDSQL && grep MAJ=2 /run/orders
start next: @licence; @action; @toupgrade; Server: * => Tab*2
send \r until Progress
$ soon_idle
unplug 0
$ grep MAJ=1 /run/orders && greeting 4900 | grep 26.0.3 && active ZDCS-ZDSQL && active KalmoManager
# systemd waits for the end of a service that takes its time.
$ mkdir -p /run/systemd/system/ZDCS-ZDSQL.service.d; cd /run/systemd/system/ZDCS-ZDSQL.service.d
    printf '[Service]\nExecStop=/bin/sleep 2\n' >slow.conf; systemctl daemon-reload
start: @remove => Enter
send \r until Uninstalling the server
unplug 0
$ unregistered ZDCS-ZDSQL && absent /usr/local/ZDSQL/tvzdsrv.so && grep MAJ=3 /run/orders
    rm -r /run/systemd/system/ZDCS-ZDSQL.service.d; systemctl daemon-reload
# An unattended run has no questions.
$ busy /srv/zd/first; install first 4950 & eventually works; soon_idle; pkill -HUP -x kalmoinstall; wait; done_first

== TwoInstallersDoNotWorkAtOnce
# One works: the operator is told.
$ busy /srv/zd/first; install first 4950 >/dev/null 2>&1 & eventually works
run: Attention / {AUTRE_INSTALLATEUR} / OK
$ soon_idle; eventually idle && done_first
# The operator has the machine: the other one waits.
start: @licence
$ rm /srv/zd/first/Install.log /tmp/trace2; install first 4950 >/dev/null 2>&1 & eventually grep waiting /tmp/trace2
$ absent /srv/zd/first/Install.log && ! grep upgrade /tmp/trace2
end: @action => Tab*2 Enter
$ eventually idle && grep upgrade /tmp/trace2 && done_first
# Of two that install the same instance the second upgrades it.
$ fresh; install first 4950 & install first 4950; wait; done_first && equal 3 "$(grep -c 'unattended run: ok' /tmp/trace2)"

== NothingBeginsWithoutAPlaceForTheRecord
$ mkdir /run/ro; mount -t tmpfs -o ro kalmo /run/ro; ln -s /etc/passwd /run/link; remember
run fr|es /RECORD=/none/orders: {ATTENTION} / {ENREGISTREMENT_IMPOSSIBLE|/none/orders|*} / OK
run /RECORD=/run: Attention / {ENREGISTREMENT_IMPOSSIBLE|/run|Is a directory} / OK
run /RECORD=/run/ro/orders: Attention / {ENREGISTREMENT_IMPOSSIBLE|/run/ro/orders|Read-only file system} / OK
run /RECORD=/run/link|/RECORD=/dev/null
    Attention / {ENREGISTREMENT_IMPOSSIBLE|*|Something stands there that is no ordinary file} / OK
$ unchanged

== WorkIsDoneThatCannotBeRecorded
# When the disk is full the file is as it was, and nothing lies beside it.
$ mkdir /run/full; mount -t tmpfs -o size=4k kalmo /run/full; echo before >/run/full/orders
run fr /RECORD=/run/full/orders: @install; {ATTENTION} / {ENREGISTREMENT_PERDU|/run/full/orders|No space left on device} / OK
run next es /RECORD=/run/full/orders: @upgrade; {ATTENTION} / {ENREGISTREMENT_PERDU|/run/full/orders|No space left on device} / OK
run /RECORD=/run/full/orders: @remove; Attention / {ENREGISTREMENT_PERDU|/run/full/orders|No space left on device} / OK; @removed
$ equal "orders before" "$(ls -A /run/full) $(cat /run/full/orders)" && unregistered ZDCS-ZDSQL
# Names that an unattended run does not take, or takes for another one's.
$ install first 4950; systemctl disable --now ZDCS-first; cd /etc/systemd/system; mv ZDCS-first.service ZDCS-$(printf '%0101d').service; systemctl daemon-reload
run es /RECORD=/run/orders: @remove; {ATTENTION} / {ENREGISTREMENT_IRREPETABLE|/run/orders} / OK
    {RETRAIT|ZDSQL server first} / * / OK
$ absent /run/orders
fresh
run /RECORD=/run/orders: @licence; @directory; @config => Backspace*5 kalmomanager Enter*3
    @account
    @telemetry
    @installed
    Attention / {ENREGISTREMENT_IRREPETABLE|/run/orders} / OK
run /RECORD=/run/orders: @licence; @action => Down*2 Enter*2; @toremove
    Attention / {ENREGISTREMENT_IRREPETABLE|/run/orders} / OK
    {RETRAIT|ZDSQL server kalmomanager} / * / OK
$ absent /run/orders && unregistered ZDCS-kalmomanager
