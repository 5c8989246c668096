#include "tests/interactive/story.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>

#include "framework/conversion.h"
#include "testkit/tui_terminal.h"
#include "tools/text_compiler/catalogue.h"

namespace kalmo {
namespace {

// Screens of server "ZDSQL" with what is proposed for it; keys that go on, keys that give up.
const std::string CS_SCREENS = R"(
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
)";

// Takes every server off the machine, and the folders and accounts of the stories.
constexpr const char* PSZ_CLEAR = R"(
    umount -q /etc/systemd/system/multi-user.target.wants /usr/sbin/useradd
    for service in $(ls /etc/systemd/system /etc/init.d | grep -xE '(ZDCS-.*|KalmoManager)(\.service)?' | sort -u); do
        service=${service%.service}
        service_stop $service
        case $init in
            systemd) systemctl disable $service; rm -f /etc/systemd/system/$service.service ;;
            *) rm -f /etc/init.d/$service; update-rc.d $service remove ;;
        esac
    done
    [ $init != systemd ] || { systemctl daemon-reload; systemctl reset-failed; }
    rm -rf /usr/local/ZDSQL /srv/zd /srv/dist /tmp/record* /tmp/trace
    userdel kdaemon
    for version in current next; do
        mkdir -p /srv/zd /srv/dist/$version
        cp "$KALMO_PAYLOAD/$version/"kalmoinstall* /srv/dist/$version
    done
)";

std::string csReplaced(std::string cs, const std::string& rcsOld, const std::string& rcsNew) {
    for (std::size_t n = 0; (n = cs.find(rcsOld, n)) != cs.npos; n += rcsNew.size()) {
        cs.replace(n, rcsOld.size(), rcsNew);
    }
    return cs;
}

// The catalogue of a language, read once.
const STCatalogue& rstCatalogue(const std::string& rcsLanguage) {
    static std::map<std::string, STCatalogue> tabRead;
    STCatalogue& rst = tabRead[rcsLanguage];
    if (rst.tabText.empty()) {
        const std::string csFile = KALMO_SOURCE "/framework/texts/" + rcsLanguage + ".txt";
        std::ifstream clFile(csFile);
        const std::string csContent{std::istreambuf_iterator<char>(clFile), {}};
        CComplaints clComplaints;
        rst = stReadCatalogue(csFile, csContent, &clComplaints);
    }
    return rst;
}

// The text of a key, "key|insert|insert", in a language.
std::string csTextOfKey(const std::string& rcsKey, const std::string& rcsLanguage) {
    std::istringstream clParts(rcsKey);
    std::string csPart;
    std::getline(clParts, csPart, '|');
    const STText* const pst = rstCatalogue(rcsLanguage).pstFind(csPart);
    if (pst == nullptr) {
        ADD_FAILURE() << "no text " << csPart;
        return "";
    }
    std::string csText = csToUTF8(pst->csText).pszGet();
    for (const char* const pszLineEnd : {"\n\n", "\n"}) {
        csText = csReplaced(csText, pszLineEnd, " / ");
    }
    for (int n = 1; std::getline(clParts, csPart, '|'); ++n) {
        const std::string csInsert = "%" + std::to_string(n);
        csText = csReplaced(csReplaced(csText, csInsert + "!d!", csPart), csInsert, csPart);
    }
    return csReplaced(csText, "[ ]", "[X]");
}

// The texts of an area of the screen, as a script has them.
std::string csTexts(const CEmulator& rcl, int nTop, int nLeft, int nRows, int nColumns) {
    static const std::regex clFrame("[-+]*\\+[-+]*|--+|\\|");
    static const std::regex clBlanks(" +");
    std::string csAll;
    for (int nRow = nTop; nRow < nTop + nRows; ++nRow) {
        std::string cs = std::regex_replace(rcl.csText(nRow, nLeft, nColumns), clFrame, " ");
        cs = std::regex_replace(cs, clBlanks, " ");
        cs.erase(0, cs.find_first_not_of(' '));
        cs.erase(cs.find_last_not_of(' ') + 1);
        csAll += (csAll.empty() || cs.empty() ? "" : " / ") + cs;
    }
    return csAll;
}

bool bMatches(const std::string& rcsText, const std::string& rcsExpected) {
    static const std::regex clSpecial(R"([.\\^$|()\[\]{}+?])");
    const std::string csPattern = std::regex_replace(rcsExpected, clSpecial, R"(\$&)");
    return std::regex_match(rcsText, std::regex(csReplaced(csPattern, "*", ".*")));
}

}  // namespace

void CStory::SetUp() {
    ASSERT_NE(std::getenv("KALMO_MACHINE"), nullptr)
        << "this installs services: run it in a throwaway machine (testkit/machine)";
    ::setenv("KALMO_PAYLOAD", KALMO_PAYLOAD, 1);
    csShell(PSZ_CLEAR);
    ASSERT_TRUE(bShell("cd /srv/dist && test -x current/kalmoinstall -a -s next/kalmoinstall.zip"));
}

void CStory::TearDown() {
    if (HasFailure() && m_pclTerminal != nullptr) {
        std::puts(rclTerminal().csText().c_str());
        std::puts(csShell("tail -n 20 /tmp/trace; ps axfo pid,stat,args | tail -n 20").c_str());
    }
}

std::vector<STStep> CStory::tabSteps(const std::string& rcsScript, const std::string& rcsLanguage) {
    static const std::regex clContinued("\n +/");
    static const std::regex clLine("\n *([^ \n].*)");
    static const std::regex clScreen("(@[a-z]+)(?: => ([^=]*))?");
    static const std::regex clKey("\\{([^}]*)\\}");
    static const std::regex clStep("(.*?)(?: => (.*?))?(?: => (.*))?");
    const std::string csScript = std::regex_replace("\n" + rcsScript, clContinued, " /");
    std::vector<STStep> tab;
    for (std::sregex_iterator it(csScript.begin(), csScript.end(), clLine), itEnd; it != itEnd; ++it) {
        std::string csLine = (*it)[1];
        std::string csOtherKeys;
        std::smatch clMatch;
        if (std::regex_match(csLine, clMatch, clScreen)) {
            csOtherKeys = clMatch[2];
            const std::regex clDefinition(clMatch[1].str() + " +(.*)");
            std::regex_search(CS_SCREENS, clMatch, clDefinition);
            csLine = clMatch[1];
        }
        for (std::smatch clText; std::regex_search(csLine, clText, clKey);) {
            csLine = clText.prefix().str() + csTextOfKey(clText[1], rcsLanguage) + clText.suffix().str();
        }
        std::regex_match(csLine, clMatch, clStep);
        const std::string csKeys = clMatch[2].matched ? clMatch[2].str() : "Enter";
        tab.push_back({clMatch[1], csOtherKeys.empty() ? csKeys : csOtherKeys, clMatch[3]});
    }
    return tab;
}

void CStory::Run(const std::string& rcsScript, const STStart& rst) {
    Run(tabSteps(rcsScript, rst.csLanguage), rst);
}

void CStory::Run(const std::vector<STStep>& rtab, const STStart& rst) {
    Start(rst);
    End(rtab);
}

void CStory::End(const std::vector<STStep>& rtab) {
    ASSERT_NO_FATAL_FAILURE(Walk(rtab));
    ASSERT_EQ(rclTerminal().nWaitEnd(), 0);
    EXPECT_EQ(rclTerminal().csText(), "\n");
    EXPECT_TRUE(rclTerminal().bCooked() && !rclTerminal().clScreen().bAlternateScreen());
}

void CStory::Start(const STStart& rst) {
    std::string csCommand = rst.csLauncher;
    if (rst.bRecord) {
        csShell("rm -f /tmp/record*");
        // A process cannot be looked at by two: no leak can be found meanwhile.
        csCommand =
            "env ASAN_OPTIONS=detect_leaks=0 strace -D -ff -qq -s 2000 -o /tmp/record "
            "-e trace=execve,fork,vfork,clone,clone3,syncfs";
    }
    csCommand += " /srv/dist/" + rst.csPayload + "/kalmoinstall /DEBUG=/tmp/trace";
    m_pclTerminal.reset();
    m_pclTerminal = std::make_unique<Terminal>(
        CTuiTerminal::tabWords(csCommand),
        Terminal::STOptions{.csType = rst.csType,
                            .nColumns = rst.nColumns,
                            .nRows = rst.nRows,
                            .tabEnvironment = {"LC_ALL=" + rst.csLanguage + ".UTF-8"},
                            .stPatience = std::chrono::seconds(60)});
}

void CStory::Walk(const std::vector<STStep>& rtab) {
    ASSERT_TRUE(rclTerminal().bSettle());
    for (const STStep& rst : rtab) {
        ASSERT_EQ(csShown(rst.csShown), rst.csShown);
        ASSERT_TRUE(rclTerminal().bPress(rst.csKeys)) << rst.csShown;
    }
}

// What is expected, when the screen shows it; else what it shows.
std::string CStory::csShown(const std::string& rcsExpected) const {
    const CEmulator& rcl = m_pclTerminal->clScreen();
    const auto nShrunk = [](int nPreferred, int nScreen) {
        return nScreen < nPreferred + 4 ? nScreen - 4 : nPreferred;
    };
    // A box of one of these heights may stand over another screen.
    const int nWidth = nShrunk(60, rcl.nColumns());
    for (const int nPreferred : {20, 13}) {
        const int nHeight = nShrunk(nPreferred, rcl.nRows());
        // Beside the shadow two corners show what is below.
        if (bMatches(csTexts(rcl, (rcl.nRows() - nHeight) / 2, (rcl.nColumns() - nWidth) / 2, nHeight - 1,
                             nWidth - 1),
                     rcsExpected)) {
            return rcsExpected;
        }
    }
    const std::string csWhole = csTexts(rcl, 0, 0, rcl.nRows(), rcl.nColumns());
    return bMatches(csWhole, rcsExpected) ? rcsExpected : csWhole;
}

std::string CStory::csShell(const std::string& rcsCommand) {
    ::setenv("KALMO_COMMAND", rcsCommand.c_str(), 1);
    constexpr const char* PSZ_BASH =
        "exec bash -c 'source " KALMO_SOURCE "/samples/story/server_state.sh; eval \"$KALMO_COMMAND\"' 2>&1";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> clPipe(::popen(PSZ_BASH, "re"), ::pclose);
    std::string cs;
    std::array<char, 4096> tab{};
    for (std::size_t n = 0; (n = std::fread(tab.data(), 1, tab.size(), clPipe.get())) > 0;) {
        cs.append(tab.data(), n);
    }
    return cs.substr(0, cs.find_last_not_of('\n') + 1);
}

bool CStory::bShell(const std::string& rcsCommand) {
    return csShell("{ " + rcsCommand + "; } >/dev/null 2>&1 && echo yes") == "yes";
}

void CStory::Install(const std::string& rcsName, int nPort) {
    ASSERT_TRUE(bShell("name=" + rcsName + " port=" + std::to_string(nPort) + R"(
        printf '[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=%s\nRepertoire=/srv/zd/%s\nPort=%s\n' $name $name $port >/tmp/orders
        /srv/dist/current/kalmoinstall /PILOT=/tmp/orders && test -e /srv/zd/$name/Install.log && greeting $port)"));
}

void CStory::KeepBusy(const std::string& rcsDirectory, int nSeconds) {
    csShell("mkdir -p " + rcsDirectory + "; cd " + rcsDirectory +
            "; cp --remove-destination /bin/sleep zdlogger; ./zdlogger " + std::to_string(nSeconds) +
            " >/dev/null 2>&1 &");
}

std::string CStory::csFiles(const std::string& rcsFolders) {
    // Of a folder its time would tell of files that came and went.
    return csShell("cd / && find " + rcsFolders + R"( -xdev -path var/lib/systemd -prune -o \
            \( -type d -printf '%p %M %U:%G\n' -o -printf '%p %M %U:%G %s %C@ %l\n' \) | sort
        ls /tmp | grep -vxE 'trace|orders|record.*')");
}

std::string CStory::csProcesses(const std::string& rcsServices) {
    return csShell("for service in " + rcsServices +
                   "; do active $service >/dev/null && pid $service || echo 0; done");
}

std::string CStory::csFate(const std::string& rcsServices, const std::string& rcsProcesses) {
    std::istringstream clBefore(rcsProcesses);
    std::istringstream clNow(csProcesses(rcsServices));
    std::string cs;
    for (std::string csBefore, csNow; clBefore >> csBefore && clNow >> csNow;) {
        cs += csNow == "0" ? '-' : csNow == csBefore ? '=' : '!';
    }
    return cs;
}

std::string CStory::csCommands() {
    // Each process has a file. The first that begins with our program is ours; it tells the numbers of its
    // children, whose files begin with what they became. Arguments are quoted, with escapes as in C, which
    // printf knows.
    return csShell(R"X(
        cd /tmp && own=$(grep -l '^execve("/srv/dist/' record.* | head -n 1)
        for child in $(sed -nE 's/^(fork|vfork|clone3?)\(.* = ([0-9]+)$/\2/p' $own); do
            head -n 1 record.$child | sed -nE 's/^execve\("[^"]*", \[(.*)\], 0x.*/\1/p' |
                sed -E 's/^"//; s/"$//; s/", "/ /g; s/^sh -c (-- )?/sh: /; s/(--PWDC )[0-9A-F]+/\1HEX/; s/%/%%/g'
        done | while read -r line; do printf "${line//\\\"/\"}\n"; done)X");
}

}  // namespace kalmo
