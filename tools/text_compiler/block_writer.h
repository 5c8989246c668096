#ifndef KALMO_TOOLS_TEXT_COMPILER_BLOCK_WRITER_H
#define KALMO_TOOLS_TEXT_COMPILER_BLOCK_WRITER_H

#include <string>
#include <vector>

#include "tools/text_compiler/catalogue.h"

namespace kalmo {

/// Lays the texts of a language out as a block of entries, by ascending number, behind the block's header
/// entry and before the closing zero. The form of an entry is told in framework/resource_block.h.
///
/// Every text is stored plainly (mode 0) with its terminating zero, in 1-byte units when it is plain ASCII
/// and in 2-byte units (UTF-16) otherwise. A text that is too long for an entry is complained about.
/// Precondition: no number occurs twice.
std::vector<unsigned char> tabBuildBlock(const STCatalogue& rstCatalogue, CComplaints* pclComplaints);

/// The definition of a block as C++ source.
std::string csBlockSource(const std::string& rcsVariable, const std::vector<unsigned char>& rtabBlock);

/// The header with the numbers of the texts, as constants named after their keys.
std::string csNumberHeader(const STCatalogue& rstCatalogue);

}  // namespace kalmo

#endif
