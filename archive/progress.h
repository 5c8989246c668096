#ifndef KALMO_ARCHIVE_PROGRESS_H
#define KALMO_ARCHIVE_PROGRESS_H

namespace kalmo {

/// A window of whoever calls the archive. The archive hands it back and never looks inside.
using HWND = void*;

/// How far an extraction has come, for a caller's gauge. Extraction fills none of it: callers show their
/// progress between entries.
struct STInfoAvancement {
    HWND hFenetre = nullptr;
    unsigned dwPourcent = 0;        ///< Of the entry, 0 to 100.
    unsigned dwPourcentGlobal = 0;  ///< Of the whole job, 0 to 100.
};

}  // namespace kalmo

#endif
