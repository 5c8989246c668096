#ifndef KALMO_SERVICES_UNIT_LISTING_H
#define KALMO_SERVICES_UNIT_LISTING_H

#include <string_view>
#include <vector>

#include "framework/xy_string.h"

namespace kalmo {

/// The names, without ".service", of the services that systemd lists, those that begin with svPrefix. False
/// when it cannot be asked.
///
/// It lists what it has loaded, which a unit that is neither enabled nor running is not.
bool bListUnits(std::wstring_view svPrefix, std::vector<CTString>* ptabName);

/// The names of those that have a unit file and are not in rtabListed, once each, without templates and
/// aliases. None when they cannot be asked for.
std::vector<CTString> tabListUnitFiles(std::wstring_view svPrefix, const std::vector<CTString>& rtabListed);

}  // namespace kalmo

#endif
