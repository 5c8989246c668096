#ifndef KALMO_APP_LISTING_LISTING_H
#define KALMO_APP_LISTING_LISTING_H

#include <optional>
#include <string>
#include <vector>

#include "framework/xy_string.h"
#include "services/service.h"

/// What "--list" tells of a machine. Called by app/answer.cpp; needs no rights and changes nothing: what
/// cannot be read or asked is unknown.
namespace kalmo {

/// An instance, or the manager that all instances share.
struct STListed {
    bool bManager = false;
    CTString csName;     ///< As a parameter file names it.
    CTString csService;  ///< The service's name.
    std::optional<int> nPort;
    CTString csVersion;    ///< Of the program that its service names; empty: unknown.
    CTString csDirectory;  ///< That of this program, with a "/" at its end; empty: unknown.
    eSERVICESTATUS eState = eServiceUnknown;
    bool bOurs = false;  ///< Its command runs nothing else, and it may be uninstalled.
};

/// Looks at the machine: every instance and then the manager, in the order of ListServer. Nothing, with the
/// reason in errno, when nobody tells its services: that is no empty machine.
std::optional<std::vector<STListed>> tabListInstances();

/// The list for people, in their language: a table, its last line without a line feed. Nothing that a
/// terminal obeys is in it.
CTString csListingAsTable(const std::vector<STListed>& rtab);

/// The list for programs, as docs/schema.json describes it, in UTF-8.
std::string csListingAsJson(const std::vector<STListed>& rtab);

}  // namespace kalmo

#endif
