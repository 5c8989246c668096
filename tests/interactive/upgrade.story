# Upgrading and uninstalling: which services and files are touched, and what is kept.
# The form is told in story_test.cpp.

== Services
# They are stopped and started as they lie: first all runs, and the manager lies in the directory of the first.
story (TwoServers)
run next: @licence; @action; @toupgrade; @telemetry
    {MAJ|ZDSQL server first|4950|/srv/zd/first/|$VERSION|26.0.3.0}
        / {MAJ_ARRETS} / {MAJ_ARRET_SERVEUR|ZDSQL server first} / {MAJ_ARRET_MANAGER} / {MAJ_QUESTION} / {OUI} {NON}
    @upgraded
$ upgraded '!=!' "first 1" "26.0.3.0 $VERSION"
# The manager lies elsewhere and goes on.
story (TwoServers)
$ printf '[TELEMETRY]\nACTIVE=0\n' >>/srv/zd/second/ZDConf.ini
run next: @licence; @action; @toupgrade => Down Enter*2
    {MAJ|ZDSQL server second|4951|/srv/zd/second/|$VERSION|26.0.3.0}
        / {MAJ_ARRETS} / {MAJ_ARRET_SERVEUR|ZDSQL server second} / {MAJ_QUESTION} / {OUI} {NON}
    @upgraded
$ upgraded '=!=' "second 0" "$VERSION 26.0.3.0"
# What was stopped runs afterwards: the server, and the manager wherever it lies.
story (TwoServers)
$ service_stop ZDCS-second; service_stop KalmoManager; printf '[TELEMETRY]\nACTIVE=2\n' >>/srv/zd/second/ZDConf.ini
    fate_of ZDCS-first ZDCS-second KalmoManager
run next: @licence; @action; @toupgrade => Down Enter*2; @telemetry => Space Enter*2
    {MAJ|ZDSQL server second|4951|/srv/zd/second/|$VERSION|26.0.3.0} / {MAJ_QUESTION} / {OUI} {NON}
    @upgraded
$ upgraded '=!!' "second 0" "$VERSION 26.0.3.0"
# The server is stopped, the manager here runs. Without notes there is no version to show.
story (TwoServers)
$ cd /srv/zd; service_stop ZDCS-first; sed -i /AccessPort/d first/ZDConf.ini
    sed -i 's/version":"2/vorsion":"2/' first/kalmo /srv/dist/next/kalmoinstall; kept >/run/kept
    fate_of ZDCS-first ZDCS-second KalmoManager
run next: @licence; @action; @toupgrade; @telemetry
    {MAJ|ZDSQL server first|4900|/srv/zd/first/|?|?} / {MAJ_ARRETS} / {MAJ_ARRET_MANAGER} / {MAJ_QUESTION} / {OUI} {NON}
    @upgraded
$ upgraded '!=!' "first 1" "26.0.3.0 $VERSION"

== (TwoServers)
$ fresh; install first 4950 && install second 4951
    kept >/run/kept; fate_of ZDCS-first ZDCS-second KalmoManager

== AHalfReplacedServerStaysStopped
story (TwoServers)
$ cd /srv/dist/next; echo sound >last.txt; zip -q0 kalmoinstall.zip last.txt; LC_ALL=C sed -i s/sound/SOUND/ kalmoinstall.zip
run next /RECORD=/run/orders: @licence; @action; @toupgrade; @telemetry; Server: ZDSQL server first / * / Yes No
    Attention / {ILLISIBLE|last.txt} / OK
    {ATTENTION} / {ARRETES| / - ZDSQL server manager / - ZDSQL server first} / OK
$ absent /run/orders
$ equal '-=-' "$(fate ZDCS-first ZDCS-second KalmoManager)"

== AListOfFiles
# An uninstallation deletes it: which programs are left, and whether the service is registered.
$ install first 4950; cd /srv/zd/first; service_stop ZDCS-first; touch tvmore.so tv.so.1 zdlogger64
run: @remove; {RETRAIT|ZDSQL server first} / {RETRAIT_ARRET} / {RETRAIT_SERVICE} / {RETRAIT_FICHIERS}* / OK
$ left "kalmomanager tv.so.1 zdlogger64"
$ fresh; install first 4950; cd /srv/zd/first; cp kalmo kalmo64; cp zdlogger zdlogger64
    sed -i s,first/kalmo,\&64, /etc/systemd/system/ZDCS-first.service; systemctl daemon-reload; systemctl restart ZDCS-first
run: @remove; {RETRAIT|ZDSQL server first} / {RETRAIT_ARRET} / {RETRAIT_SERVICE} / {RETRAIT_FICHIERS}* / OK
$ left "kalmo kalmomanager zdlogger"
$ fresh; install first 4950; rm /srv/zd/first/zdlogger
run: @remove; {ATTENTION} / {RETRAIT_FICHIER_ERREUR|*zdlogger*} / OK
$ left "kalmomanager tvsqlsrv.so tvzdsrv.so"
$ fresh; install first 4950; cd /etc/systemd/system/multi-user.target.wants && mount --bind . . && mount -o remount,bind,ro .
run: @remove; {ATTENTION} / {RETRAIT_SERVICE_ERREUR|Read-only file system} / {ARRETES| / - ZDSQL server first} / OK
$ left "kalmo kalmomanager tvsqlsrv.so tvzdsrv.so zdlogger registered"
$ fresh; install first 4950; sed -i 's/^ExecStart=.*/ExecStop=true/;s/^Type=.*//' /etc/systemd/system/ZDCS-first.service
    systemctl daemon-reload; systemctl stop ZDCS-first; pkill -x kalmo; true
run: @remove; {ATTENTION} / {RETRAIT_SANS_FICHIER|ZDSQL server first} / OK
$ left "kalmo kalmomanager tvsqlsrv.so tvzdsrv.so zdlogger"
