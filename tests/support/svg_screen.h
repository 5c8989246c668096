#ifndef KALMO_TESTS_SUPPORT_SVG_SCREEN_H
#define KALMO_TESTS_SUPPORT_SVG_SCREEN_H

#include <string>

#include "tests/support/emulator.h"

namespace kalmo {

/// The screen as an SVG picture: the same screen gives the same bytes. A visible cursor is a frame around its
/// cell.
std::string csSvgOfScreen(const CEmulator& rclScreen);

}  // namespace kalmo

#endif
