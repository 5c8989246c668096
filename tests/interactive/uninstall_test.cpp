// Uninstalling: what is deleted, what is left, and where it stops.

#include "tests/interactive/story.h"

namespace kalmo {
namespace {

TEST_F(CStory, UninstallingDeletesAListOfFiles) {
    const struct {
        const char* pszPrepare;
        const char* pszShown;
        const char* pszLeft;  ///< Of the programs, and whether the service is registered.
    } TAB[] = {
        {"service_stop ZDCS-first", "{10E9|ZDSQL server first} / {10E3} / {10E4} / {10E5}* / OK",
         "kalmomanager"},
        {R"(cp kalmo kalmo64; cp zdlogger zdlogger64
            sed -i s,first/kalmo,\&64, /etc/systemd/system/ZDCS-first.service
            systemctl daemon-reload; systemctl restart ZDCS-first)",
         "{10E9|ZDSQL server first} / {10E3} / {10E4} / {10E5}* / OK", "kalmo kalmomanager zdlogger"},
        {"rm zdlogger", "{103A} / {10E8|*zdlogger*} / OK", "kalmomanager tvsqlsrv.so tvzdsrv.so"},
        {"cd /etc/systemd/system/multi-user.target.wants && mount --bind . . && mount -o remount,bind,ro .",
         "{103A} / {10E7|*} / OK", "kalmo kalmomanager tvsqlsrv.so tvzdsrv.so zdlogger registered"},
    };
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.pszPrepare);
        SetUp();
        Install("first", 4950);
        csShell("cd /srv/zd/first; " + std::string(rst.pszPrepare));
        Run("@licence\n@action => Down*2 Enter*2\n@toremove\n" + std::string(rst.pszShown));
        EXPECT_EQ(csShell("cd /srv/zd/first; echo $(ls | grep -E '^(kalmo|zdlogger|tv)'; "
                          "! registered ZDCS-first || echo registered)"),
                  rst.pszLeft);
        EXPECT_TRUE(bShell("! active ZDCS-first; cd /srv/zd/first; test -s ZDConf.ini -a -d BDD/__system"));
    }
}

TEST_F(CStory, KeysTypedAheadLeaveTheResultToBeSeen) {
    Install("ZDSQL", 4950);
    Start({});
    Walk(tabSteps("@licence\n@action => Down*2 Enter*2\n@toremove => Enter"));
    rclTerminal().Send("\r\r\r\r");
    End(tabSteps("@removed"));
}

}  // namespace
}  // namespace kalmo
