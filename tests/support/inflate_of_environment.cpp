// Linked into a program, this takes the place of archive/inflate_choice.cpp: what inflates is what the
// environment variable KALMO_INFLATE names.

#include <cstdlib>
#include <string_view>

#include "archive/inflate_engine.h"

const kalmo::STInflateLibrary& kalmo::rstInflateLibrary() noexcept {
    static const char* const PSZ_NAME = std::getenv("KALMO_INFLATE");
    return PSZ_NAME != nullptr && std::string_view(PSZ_NAME) == "isal" ? rstIsal() : rstZlib();
}
