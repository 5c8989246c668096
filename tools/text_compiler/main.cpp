// Compiles the text catalogues of the three languages into the C++ source of their blocks and the header with
// the numbers of the texts.
//
//     kalmo_text_compiler BLOCKS.cpp NUMBERS.h EN.txt FR.txt ES.txt
//
// Exits with 0 and writes both only when every catalogue is sound and all agree; else prints one line
// "file:line: message" for each fault and exits with 1. The notes behind the numbers are those of the first
// catalogue. A file that would not change is left alone, so that a new wording compiles no more than the
// blocks.

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "tools/text_compiler/block_writer.h"
#include "tools/text_compiler/catalogue.h"
#include "tools/text_compiler/catalogue_check.h"

namespace kalmo {
namespace {

constexpr std::array<const char*, 3> tabVARIABLE = {"g_tabBlock_US", "g_tabBlock_FR", "g_tabBlock_ES"};

bool bReadFile(const char* pszFile, std::string* pcsOut) {
    std::ifstream clFile(pszFile, std::ios::binary);
    pcsOut->assign(std::istreambuf_iterator<char>(clFile), std::istreambuf_iterator<char>());
    return clFile.is_open() && !clFile.bad();
}

bool bWriteFile(const char* pszFile, const std::string& rcsContent) {
    std::string csBefore;
    if (bReadFile(pszFile, &csBefore) && csBefore == rcsContent) {
        return true;
    }
    std::ofstream clFile(pszFile, std::ios::binary);
    clFile << rcsContent;
    clFile.close();
    if (!clFile) {
        (void)std::fprintf(stderr, "%s: the file cannot be written\n", pszFile);
    }
    return clFile.good();
}

bool bCompile(const char* pszBlocks, const char* pszNumbers, char** tabszInput) {
    CComplaints clComplaints;
    std::array<STCatalogue, tabVARIABLE.size()> tabCatalogue;
    for (std::size_t n = 0; n < tabCatalogue.size(); ++n) {
        std::string csContent;
        tabCatalogue[n].csFile = tabszInput[n];
        if (!bReadFile(tabszInput[n], &csContent)) {
            clComplaints.Add(tabCatalogue[n], 1, "the file cannot be read");
            continue;
        }
        tabCatalogue[n] = stReadCatalogue(tabszInput[n], csContent, &clComplaints);
    }
    if (clComplaints.rtabGet().empty()) {
        CheckCatalogues(tabCatalogue, &clComplaints);
    }

    std::string csSource =
        "// Made from the text catalogues by kalmo_text_compiler; change those.\n\n"
        "#include \"framework/resource_block.h\"\n\nnamespace kalmo {\n";
    for (std::size_t n = 0; n < tabCatalogue.size(); ++n) {
        csSource += "\n";
        csSource += csBlockSource(tabVARIABLE[n], tabBuildBlock(tabCatalogue[n], &clComplaints));
    }
    csSource += "\n}  // namespace kalmo\n";

    for (const std::string& rcsLine : clComplaints.rtabGet()) {
        (void)std::fprintf(stderr, "%s\n", rcsLine.c_str());
    }
    if (!clComplaints.rtabGet().empty()) {
        return false;
    }
    return bWriteFile(pszBlocks, csSource) && bWriteFile(pszNumbers, csNumberHeader(tabCatalogue[0]));
}

}  // namespace
}  // namespace kalmo

int main(int argc, char** argv) {
    if (argc != 6) {
        (void)std::fprintf(stderr, "usage: kalmo_text_compiler BLOCKS.cpp NUMBERS.h EN.txt FR.txt ES.txt\n");
        return 1;
    }
    return kalmo::bCompile(argv[1], argv[2], argv + 3) ? 0 : 1;
}
