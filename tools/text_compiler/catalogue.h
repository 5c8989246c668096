#ifndef KALMO_TOOLS_TEXT_COMPILER_CATALOGUE_H
#define KALMO_TOOLS_TEXT_COMPILER_CATALOGUE_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kalmo {

constexpr unsigned HEADER_NUMBER = 257;  ///< Of the blocks' own header.

/// One text of a catalogue.
struct STText {
    int nLine = 0;  ///< Line of its header, from 1.
    std::string csKey;
    unsigned unNumber = 0;
    unsigned unColumns = 0;  ///< The room on the screen.
    unsigned unLines = 0;
    std::map<int, std::vector<unsigned>> tabSample;  ///< By insert: the columns of each line of its sample.
    std::string csAfter;                             ///< Key of the text that it is shown behind; or empty.
    std::string csNote;
    std::wstring csText;
};

/// One language: what a catalogue file holds, in the order of the file.
struct STCatalogue {
    std::string csFile;  ///< Name for messages.
    std::vector<STText> tabText;

    /// The text of a key; null when there is none.
    [[nodiscard]] const STText* pstFind(std::string_view svKey) const noexcept;
};

/// What is wrong with the catalogues, as lines "file:line: message" that editors and build tools understand.
class CComplaints {
  public:
    void Add(const STCatalogue& rstCatalogue, int nLine, std::string_view svMessage);
    [[nodiscard]] const std::vector<std::string>& rtabGet() const noexcept { return m_tabLine; }

  private:
    std::vector<std::string> m_tabLine;
};

/// Reads a catalogue. Its form is told at the head of framework/texts/en.txt.
/// What does not follow it is complained about and left out.
STCatalogue stReadCatalogue(std::string_view svFile, std::string_view svContent, CComplaints* pclComplaints);

}  // namespace kalmo

#endif
