#include "tests/archive/crafted_zip.h"

#include <zlib.h>

#include "archive/crc32.h"

namespace kalmo {
namespace {

std::uint32_t dwCrcOf(std::string_view sv) {
    return dwCrc32(0, tabBytes(sv));
}

std::string csStored(const STCraftedEntry& rst) {
    return rst.bDeflate ? csDeflate(rst.csData) : rst.csData;
}

std::string csLocal(const STCraftedEntry& rst) {
    const std::string csName = rst.csLocalName.value_or(rst.csName);
    const std::string csData = csStored(rst);
    return csLe(rst.dwLocalSignature.value_or(0x04034B50), 4) + csLe(20, 2) +
           csLe(rst.wLocalFlags.value_or(rst.wFlags), 2) +
           csLe(rst.wLocalMethode.value_or(rst.bDeflate ? 8 : 0), 2) + csLe(rst.dwDate, 4) +
           csLe(rst.dwLocalCrc.value_or(dwCrcOf(rst.csData)), 4) + csLe(csData.size(), 4) +
           csLe(rst.csData.size(), 4) + csLe(csName.size(), 2) + csLe(0, 2) + csName + csData;
}

std::string csCentral(const STCraftedEntry& rst, std::size_t nOffset) {
    return csLe(rst.dwSignature.value_or(0x02014B50), 4) + csLe(rst.wMadeBy, 2) + csLe(20, 2) +
           csLe(rst.wFlags, 2) + csLe(rst.wMethode.value_or(rst.bDeflate ? 8 : 0), 2) + csLe(rst.dwDate, 4) +
           csLe(rst.dwCrc.value_or(dwCrcOf(rst.csData)), 4) +
           csLe(rst.dwCompresse.value_or(static_cast<std::uint32_t>(csStored(rst).size())), 4) +
           csLe(rst.dwOriginale.value_or(static_cast<std::uint32_t>(rst.csData.size())), 4) +
           csLe(rst.wNameLength.value_or(static_cast<std::uint16_t>(rst.csName.size())), 2) +
           csLe(rst.wExtraLength.value_or(static_cast<std::uint16_t>(rst.csExtra.size())), 2) +
           csLe(rst.csComment.size(), 2) + csLe(rst.wDisk, 2) + csLe(0, 2) + csLe(rst.dwAttribut, 4) +
           csLe(rst.dwOffset.value_or(static_cast<std::uint32_t>(nOffset)), 4) + rst.csName + rst.csExtra +
           rst.csComment;
}

}  // namespace

std::string csLe(std::uint64_t u64, int nBytes) {
    std::string cs;
    for (; nBytes > 0; --nBytes, u64 >>= 8) {
        cs += static_cast<char>(u64 & 0xFF);
    }
    return cs;
}

std::string csDeflate(std::string_view sv) {
    z_stream st{};
    std::string csOut(sv.size() + 64, '\0');
    deflateInit2(&st, 9, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    CTLBIN tabIn = tabBytes(sv);
    st.next_in = tabIn.data();
    st.avail_in = static_cast<uInt>(tabIn.size());
    st.next_out = reinterpret_cast<unsigned char*>(csOut.data());
    st.avail_out = static_cast<uInt>(csOut.size());
    deflate(&st, Z_FINISH);
    csOut.resize(st.total_out);
    deflateEnd(&st);
    return csOut;
}

std::uint32_t STCraftedZip::dwDirectoryStart() const {
    std::size_t n = 0;
    for (const STCraftedEntry& rst : tabEntry) {
        n += csLocal(rst).size();
    }
    return static_cast<std::uint32_t>(n);
}

std::string STCraftedZip::csBytes() const {
    std::string csLocals;
    std::string csDirectory;
    for (const STCraftedEntry& rst : tabEntry) {
        csDirectory += csCentral(rst, csLocals.size());
        csLocals += csLocal(rst);
    }
    const auto wCount = static_cast<std::uint16_t>(tabEntry.size());
    return csPrefix + csLocals + csDirectory + csBeforeEnd + csLe(0x06054B50, 4) +
           csLe(wDisk.value_or(0), 2) + csLe(wDirectoryDisk.value_or(0), 2) +
           csLe(wEntries.value_or(wCount), 2) + csLe(wEntries.value_or(wCount), 2) +
           csLe(dwDirectorySize.value_or(static_cast<std::uint32_t>(csDirectory.size())), 4) +
           csLe(dwDirectoryOffset.value_or(static_cast<std::uint32_t>(csLocals.size())), 4) +
           csLe(wCommentLength.value_or(static_cast<std::uint16_t>(csComment.size())), 2) + csComment;
}

}  // namespace kalmo
