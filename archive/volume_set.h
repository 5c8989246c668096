#ifndef KALMO_ARCHIVE_VOLUME_SET_H
#define KALMO_ARCHIVE_VOLUME_SET_H

#include <cstdint>
#include <memory>
#include <string_view>

#include "framework/disk_file.h"
#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

/// The files of a split archive.
///
/// The last volume is the archive file itself, which the record reader's owner opened; the earlier ones lie
/// beside it under the same base name with the extensions z01, z02 and so on, and are opened when something
/// of them is read. An archive in one file is a set of one volume, also one that counts itself as a later
/// volume: what is said to lie in a volume that is not there is looked for in the archive file.
class CVolumeSet {
  public:
    /// Begins a set of one volume. The stream is borrowed and must stay while the set is used. The path says
    /// where the other volumes lie; without one there are none to be found.
    void Attach(IXStream* pclLast, std::wstring_view svPath);
    /// Tells the number of the last volume, counted from 0.
    void SetLastDisk(std::uint32_t dwLast) noexcept { m_dwLast = dwLast; }
    /// True for a volume in front of the last one.
    [[nodiscard]] bool bEarlier(std::uint32_t dwDisk) const noexcept { return dwDisk < m_dwLast; }
    /// Closes what was opened.
    void Release() noexcept { m_pclJoined.reset(); }

    /// The extension of a volume's file: ".z01" for volume 0, ".zip" for the last one and beyond.
    [[nodiscard]] CTString csExtension(std::uint32_t dwDisk) const;

    /// True when what lies in a volume is to be read from the archive file: it is the last one or beyond, or
    /// has no file of its own.
    [[nodiscard]] bool bInArchiveFile(std::uint32_t dwDisk) const;

    /// The bytes from the start of a volume on, going on in the volumes that follow it; those of the archive
    /// file where bInArchiveFile says so. Never null; a following volume that is missing, or one that cannot
    /// be opened, shows as a failed read with the reason in errno. Valid until the next call.
    IXStream* pclFrom(std::uint32_t dwDisk);

  private:
    /// The path of the file of an earlier volume. False, with errno set, when there can be none.
    bool __bPathOf(std::uint32_t dwDisk, CPathBuffer& rszOut) const;

    /// Several volumes as one run of bytes. The position counts from the start of the first of them. In front
    /// of a missing one it ends: a read up to there gives what there is, a read beyond fails.
    class CJoined final : public IXStream {
      public:
        CJoined(const CVolumeSet& rclSet, std::uint32_t dwFirst) : m_rclSet(rclSet), m_dwFirst(dwFirst) {}

        bool bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) override;
        /// Always false: archives are read.
        bool bWrite(const void* pBuffer, std::size_t nSize) override;
        bool bSeek(std::int64_t i64Position) override;
        [[nodiscard]] std::int64_t i64GetPosition() const override { return m_i64Position; }
        /// Always -1: it would take opening every volume.
        std::int64_t i64GetLength() override { return -1; }

      private:
        [[nodiscard]] bool __bOnLast() const noexcept { return m_dwDisk >= m_rclSet.m_dwLast; }
        /// Makes the volume that holds a position the open one.
        bool __bEnter(std::int64_t i64Position);
        bool __bOpen(std::uint32_t dwDisk, std::int64_t i64Start);

        const CVolumeSet& m_rclSet;
        const std::uint32_t m_dwFirst;
        std::int64_t m_i64Position = 0;

        bool m_bOpen = false;
        std::uint32_t m_dwDisk = 0;    ///< The open volume.
        std::int64_t m_i64Start = 0;   ///< Position of its first byte.
        std::int64_t m_i64Length = 0;  ///< Its length; of no meaning for the last one.
        CDiskFile m_clFile;            ///< Its file, unless it is the last one.
    };

    IXStream* m_pclLast = nullptr;
    CTString m_csPath;
    std::uint32_t m_dwLast = 0;
    std::unique_ptr<CJoined> m_pclJoined;
};

}  // namespace kalmo

#endif
