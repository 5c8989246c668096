#ifndef KALMO_TOOLS_TEXT_COMPILER_CATALOGUE_CHECK_H
#define KALMO_TOOLS_TEXT_COMPILER_CATALOGUE_CHECK_H

#include <span>

#include "tools/text_compiler/catalogue.h"

namespace kalmo {

/// How many texts a language may have: the index of a block has room for 123 offsets, the block's header
/// takes one, and one stays free.
constexpr std::size_t nMAX_TEXTS = 121;

/// Checks each catalogue by itself: no key or number twice, not too many texts, every text well-formed as a
/// message and, with samples for its inserts, within its room on the screen.
/// Then compares each with the first one: the same keys in the same order, each with the same number, the
/// same room, the same samples and the same inserts in the same formats.
void CheckCatalogues(std::span<const STCatalogue> tabCatalogue, CComplaints* pclComplaints);

}  // namespace kalmo

#endif
