#ifndef KALMO_TESTS_INTERACTIVE_STORY_H
#define KALMO_TESTS_INTERACTIVE_STORY_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "testkit/terminal.h"

namespace kalmo {

/// A screen that is expected, and the keys that are pressed then (see Terminal::bPress).
struct STStep {
    std::string csShown;
    std::string csKeys;    ///< They go on.
    std::string csGiveUp;  ///< They cancel.
};

/// How the installer is started.
struct STStart {
    std::string csPayload = "current";  ///< Folder below /srv/dist: "current" or "next".
    std::string csLanguage = "en";      ///< "fr", "es"
    std::string csLauncher = "";        ///< A program with arguments that starts the installer.
    std::string csType = "xterm-256color";
    int nColumns = 80;
    int nRows = 24;
    bool bRecord = false;  ///< Write down what it runs; see csCommands.
};

/// Stories of an operator who installs, upgrades and removes servers on a real machine, which must be a
/// throwaway one. Each begins on a machine without any server, with copies of the payloads in /srv/dist.
///
/// A script tells a run, a line a screen: "SCREEN => KEYS" or "SCREEN => KEYS => KEYS THAT GIVE UP"; without
/// keys they are Enter. Lines that begin with "/" belong to the one before. SCREEN holds the texts from top
/// to bottom, " / " between two rows, frames and blank rows left out; what a box leaves to see of the screen
/// below it does not count. "*" stands for anything, "{OK}" for the text of that key of the catalogues,
/// "{CONFLIT_NOM|name}" for one with an insert, and "@directory" for a screen of story.cpp with its keys.
class CStory : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// Starts the installer, goes through the screens, and looks whether it ended well and left the terminal
    /// in order. At the first thing that is wrong it stops.
    void Run(const std::string& rcsScript, const STStart& rst = {});
    void Run(const std::vector<STStep>& rtab, const STStart& rst = {});
    /// The parts of it.
    static std::vector<STStep> tabSteps(const std::string& rcsScript, const std::string& rcsLanguage = "en");
    void Start(const STStart& rst);
    void Walk(const std::vector<STStep>& rtab);
    void End(const std::vector<STStep>& rtab);
    Terminal& rclTerminal() { return *m_pclTerminal; }

    /// What a shell command prints, without the line feeds at its end. It knows the functions of
    /// samples/story/server_state.sh.
    static std::string csShell(const std::string& rcsCommand);
    static bool bShell(const std::string& rcsCommand);
    /// Installs a server without asking anybody, in a directory below /srv/zd.
    static void Install(const std::string& rcsName, int nPort);
    /// Lets a program of the instance in a directory run for so many seconds: its file is waited for.
    static void KeepBusy(const std::string& rcsDirectory, int nSeconds);
    /// All files in folders of the machine, with what changes when they are touched, and the names in /tmp.
    static std::string csFiles(const std::string& rcsFolders = "etc home opt srv usr/local var/lib");
    /// The processes of services, and what has become of them since: a character each, "=" the same process,
    /// "!" another one, "-" none.
    static std::string csProcesses(const std::string& rcsServices);
    static std::string csFate(const std::string& rcsServices, const std::string& rcsProcesses);
    /// The command lines of the programs that the recorded run has started itself, a line each: words are
    /// separated by blanks, a shell's stand behind "sh: ", and the enciphered password is HEX.
    static std::string csCommands();

  private:
    [[nodiscard]] std::string csShown(const std::string& rcsExpected) const;

    std::unique_ptr<Terminal> m_pclTerminal;
};

}  // namespace kalmo

#endif
