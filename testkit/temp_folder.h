#ifndef KALMO_TESTKIT_TEMP_FOLDER_H
#define KALMO_TESTKIT_TEMP_FOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kalmo {

/// A new folder for the files of one test, removed with all it holds when the test is over.
class CTempFolder {
  public:
    CTempFolder() {
        std::string csName = (std::filesystem::temp_directory_path() / "kalmo.XXXXXX").string();
        if (::mkdtemp(csName.data()) == nullptr) {
            throw std::runtime_error("cannot create " + csName);
        }
        m_clPath = csName;
    }
    ~CTempFolder() {
        std::error_code eIgnored;
        std::filesystem::remove_all(m_clPath, eIgnored);
    }
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;

    /// The path of a name in the folder.
    [[nodiscard]] std::filesystem::path clPath(std::string_view svName) const { return m_clPath / svName; }
    [[nodiscard]] std::wstring csWide(std::string_view svName) const { return clPath(svName).wstring(); }
    void Write(std::string_view svName, std::string_view svContent) const {
        std::ofstream(clPath(svName), std::ios::binary) << svContent;
    }
    /// The content of a file; "(none)" when it cannot be read.
    [[nodiscard]] std::string csRead(std::string_view svName) const {
        std::ifstream clFile(clPath(svName), std::ios::binary);
        return clFile ? std::string{std::istreambuf_iterator<char>(clFile), {}} : "(none)";
    }
    /// Runs a shell command in the folder; true when it succeeds.
    [[nodiscard]] bool bShell(const std::string& csCommand) const {
        return std::system(("cd '" + m_clPath.string() + "' && {\n" + csCommand + "\n}").c_str()) == 0;
    }

  private:
    std::filesystem::path m_clPath;
};

}  // namespace kalmo

#endif
