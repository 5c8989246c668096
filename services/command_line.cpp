#include "services/command_line.h"

#include <algorithm>

namespace kalmo {
namespace {

// Takes the next word off the text. False when only spaces are left.
bool bTakeWord(std::string_view* psvText, std::string* pcsWord) {
    psvText->remove_prefix(std::min(psvText->find_first_not_of(' '), psvText->size()));
    if (psvText->empty()) {
        return false;
    }
    pcsWord->clear();
    bool bGroup = false;
    std::size_t n = 0;
    for (; n < psvText->size() && (bGroup || (*psvText)[n] != ' '); ++n) {
        if ((*psvText)[n] == '"') {
            bGroup = !bGroup;
        } else {
            *pcsWord += (*psvText)[n];
        }
    }
    psvText->remove_prefix(n);
    return true;
}

}  // namespace

CArgumentVector tabSplitArguments(std::string_view svProgram, std::string_view svArguments) {
    CArgumentVector tabWord{std::string(svProgram)};
    for (std::string csWord; tabWord.size() < MAX_ARGUMENT_VECTOR && bTakeWord(&svArguments, &csWord);) {
        tabWord.push_back(csWord);
    }
    return tabWord;
}

CArgumentVector tabSplitCommandLine(std::string_view svCommandLine) {
    CArgumentVector tabWord;
    for (std::string csWord; bTakeWord(&svCommandLine, &csWord);) {
        csWord.erase(csWord.find_last_not_of(' ') + 1);
        tabWord.push_back(csWord);
    }
    return tabWord;
}

std::vector<char*> tabExecVector(CArgumentVector& rtabArgument) {
    std::vector<char*> tabPointer;
    tabPointer.reserve(rtabArgument.size() + 1);
    for (std::string& rcs : rtabArgument) {
        tabPointer.push_back(rcs.data());
    }
    tabPointer.push_back(nullptr);
    return tabPointer;
}

}  // namespace kalmo
