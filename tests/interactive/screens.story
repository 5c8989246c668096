# Screens of server "ZDSQL" with what is proposed for it; keys that go on, keys that give up.
# The form is told in story_test.cpp.
@licence    {TITRE_LICENCE} / ZDSQL SAMPLE SERVER - LICENCE AGREEMENT / * / {ACCEPTER} {REFUSER} => Down*40 Tab Enter => Tab Enter
@directory  {REPERTOIRE} / /usr/local/ZDSQL / .. / * / {OK} {ANNULER} => Enter => Tab*3 Enter
@config     {NOM_SERVEUR} / ZDSQL / {PORT} / 4900 / {COMPTE_SYSTEME} / root / {OK} {ANNULER} => Enter*3 => Tab*4 Enter
@account    {TITRE_COMPTE} / {COMPTE} / Admin / {MOT_DE_PASSE} / {OK} {ANNULER} => Enter*3 => Tab*3 Enter
@telemetry  {TELEMETRIE} / [X]{TELEMETRIE_ACTIVE} / {OK} {ANNULER} => Enter*2 => Tab*2 Enter
@installed  {INSTALLE} / {ADMIN_SANS_MDP|Admin} / {OK} => Enter
@action     {TITRE_ACTION} / (X) {ACTION_MISE_A_JOUR} / ( ) {ACTION_INSTALLER} / ( ) {ACTION_DESINSTALLER} / {OK} {ANNULER} => Enter*2 => Tab*2 Enter
@manage     {TITRE_ACTION} / (X) {ACTION_INSTALLER} / ( ) {ACTION_DESINSTALLER} / {OK} {ANNULER} => Enter*2 => Tab*2 Enter
@toupgrade  {TITRE_MISE_A_JOUR} / * / {OK} {ANNULER} => Enter*2 => Tab*2 Enter
@toremove   {TITRE_DESINSTALLATION} / * / {OK} {ANNULER} => Enter*2 => Tab*2 Enter
@upgraded   {MAJ_FAITE} / {OK} => Enter
@removed    {RETRAIT|ZDSQL server ZDSQL} / {RETRAIT_ARRET} / {RETRAIT_SERVICE} / {RETRAIT_FICHIERS}* / {OK} => Enter
# Roads through them.
@asked      @licence; @directory; @config; @account; @telemetry
@install    @asked; @installed
@plan       {MAJ|ZDSQL server ZDSQL|4900|/usr/local/ZDSQL/|$VERSION|26.0.3.0} / {MAJ_ARRETS} / {MAJ_ARRET_SERVEUR|ZDSQL server ZDSQL} / {MAJ_ARRET_MANAGER} / {MAJ_QUESTION} / {OUI} {NON}
@upgrade    @licence; @action; @toupgrade; @plan; @upgraded
@remove     @licence; @action => Down*2 Enter*2; @toremove
@another    @licence; @action => Down Enter*2
