#include "tools/text_compiler/block_writer.h"

#include <algorithm>
#include <string_view>

#include "framework/conversion.h"

namespace kalmo {
namespace {

constexpr std::string_view SV_HEADER_TEXT = "TALVOR RES BLOC UTF16 START ";
constexpr std::size_t ENTRY_HEADER = 7;
constexpr unsigned char TWO_BYTE_UNITS = 1U << 6U;
constexpr std::size_t BYTES_PER_LINE = 20;

void AppendU16(std::vector<unsigned char>* ptab, std::size_t n) {
    ptab->push_back(static_cast<unsigned char>(n & 0xFFU));
    ptab->push_back(static_cast<unsigned char>(n >> 8U));
}

bool bAscii(std::wstring_view sv) {
    return std::all_of(sv.begin(), sv.end(), [](wchar_t c) { return c < 0x80; });
}

// The stored bytes of a text, terminating zero included.
std::vector<unsigned char> tabStored(std::wstring_view sv) {
    std::vector<unsigned char> tab;
    if (bAscii(sv)) {
        tab.assign(sv.begin(), sv.end());
        tab.push_back(0);
        return tab;
    }
    for (const char16_t un : csToUTF16(sv)) {
        AppendU16(&tab, un);
    }
    AppendU16(&tab, 0);
    return tab;
}

// Appends one entry; false, with nothing appended, when its size does not fit its field.
bool bAppendEntry(std::vector<unsigned char>* ptab, unsigned unNumber, std::wstring_view svText) {
    const std::vector<unsigned char> tabText = tabStored(svText);
    if (ENTRY_HEADER + tabText.size() > 0xFFFF) {
        return false;
    }
    AppendU16(ptab, ENTRY_HEADER + tabText.size());
    AppendU16(ptab, unNumber);
    ptab->push_back(bAscii(svText) ? 0 : TWO_BYTE_UNITS);
    AppendU16(ptab, tabText.size());
    ptab->insert(ptab->end(), tabText.begin(), tabText.end());
    return true;
}

}  // namespace

std::vector<unsigned char> tabBuildBlock(const STCatalogue& rstCatalogue, CComplaints* pclComplaints) {
    std::vector<const STText*> tabText;
    for (const STText& rstText : rstCatalogue.tabText) {
        tabText.push_back(&rstText);
    }
    std::sort(tabText.begin(), tabText.end(),
              [](const STText* pst1, const STText* pst2) { return pst1->unNumber < pst2->unNumber; });

    std::vector<unsigned char> tabBlock;
    bAppendEntry(&tabBlock, HEADER_NUMBER, std::wstring(SV_HEADER_TEXT.begin(), SV_HEADER_TEXT.end()));
    for (const STText* pstText : tabText) {
        if (!bAppendEntry(&tabBlock, pstText->unNumber, pstText->csText)) {
            pclComplaints->Add(rstCatalogue, pstText->nLine,
                               "the text is too long for an entry of the block");
        }
    }
    AppendU16(&tabBlock, 0);
    return tabBlock;
}

std::string csBlockSource(const std::string& rcsVariable, const std::vector<unsigned char>& rtabBlock) {
    std::string cs = "static const unsigned char " + rcsVariable + "_bytes[] = {";
    for (std::size_t n = 0; n < rtabBlock.size(); ++n) {
        cs += n % BYTES_PER_LINE == 0 ? "\n    " : " ";
        cs += std::to_string(rtabBlock[n]) + ",";
    }
    return cs + "\n};\nconstinit const std::span<const unsigned char> " + rcsVariable + "(" + rcsVariable +
           "_bytes);\n";
}

std::string csNumberHeader(const STCatalogue& rstCatalogue) {
    std::string cs =
        "#ifndef KALMO_FRAMEWORK_TEXT_NUMBER_H\n#define KALMO_FRAMEWORK_TEXT_NUMBER_H\n\n"
        "/// The texts of the catalogues, by their numbers. Made from the catalogues; change those.\n"
        "namespace kalmo {\n\n";
    for (const STText& rstText : rstCatalogue.tabText) {
        cs += "constexpr unsigned TEXTE_" + rstText.csKey + " = " + std::to_string(rstText.unNumber) + ";";
        cs += rstText.csNote.empty() ? "\n" : "  ///< " + rstText.csNote + "\n";
    }
    return cs + "\n}  // namespace kalmo\n\n#endif\n";
}

}  // namespace kalmo
