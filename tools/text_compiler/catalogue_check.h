#ifndef KALMO_TOOLS_TEXT_COMPILER_CATALOGUE_CHECK_H
#define KALMO_TOOLS_TEXT_COMPILER_CATALOGUE_CHECK_H

#include <span>

#include "tools/text_compiler/catalogue.h"

namespace kalmo {

/// How many texts a language may have: the index of a block has room for 123 offsets, the block's header
/// takes one, and one stays free.
constexpr std::size_t MAX_TEXTS = 121;

/// Checks each catalogue by itself: no number twice, not too many texts, every text within its room on the
/// screen and well-formed as a message.
/// Then compares each with the first one: the same numbers, the same room, the same inserts in the same
/// formats.
void CheckCatalogues(std::span<const STCatalogue> tabCatalogue, CComplaints* pclComplaints);

}  // namespace kalmo

#endif
