#include "framework/json_text.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>

#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr int MAX_DEPTH = 32;

// What the library's reader tells as it goes; it has these names for it. An answer of false ends the reading.
// Nothing but the wanted string is kept, so that a text costs its reader no more memory than it is long.
class CStringSearch {
  public:
    explicit CStringSearch(std::string_view svName) noexcept : m_svName(svName) {}

    [[nodiscard]] const std::optional<std::string>& csGetFound() const noexcept { return m_csFound; }

    bool start_object(std::size_t /*nCount*/) { return __bOpen(); }
    bool end_object() { return __bClose(); }
    bool start_array(std::size_t /*nCount*/) { return m_nDepth > 0 && __bOpen(); }
    bool end_array() { return __bClose(); }
    bool key(const std::string& rcs) {
        m_bWanted = m_nDepth == 1 && rcs == m_svName;
        return true;
    }
    bool string(const std::string& rcs) {
        if (m_bWanted) {
            m_csFound = rcs;
        }
        return __bOther();
    }
    bool null() { return __bOther(); }
    bool boolean(bool /*b*/) { return __bOther(); }
    bool number_integer(std::int64_t /*i64*/) { return __bOther(); }
    bool number_unsigned(std::uint64_t /*u64*/) { return __bOther(); }
    bool number_float(double /*d*/, const std::string& /*rcs*/) { return __bOther(); }
    bool binary(const nlohmann::json::binary_t& /*rtab*/) { return false; }  // No JSON text has any.
    bool parse_error(std::size_t /*nAt*/, const std::string& /*rcsToken*/, const std::exception& /*rcl*/) {
        return false;
    }

  private:
    bool __bOpen() {
        m_bWanted = false;
        return m_nDepth++ <= MAX_DEPTH;
    }
    bool __bClose() {
        --m_nDepth;
        return true;
    }
    // A value beside the object is no object.
    bool __bOther() {
        m_bWanted = false;
        return m_nDepth > 0;
    }

    std::string_view m_svName;
    std::optional<std::string> m_csFound;
    bool m_bWanted = false;  // The name before the value is the one that is asked for.
    int m_nDepth = 0;
};

}  // namespace

std::optional<CTString> csJsonString(std::string_view svJson, std::string_view svName) try {
    const CMemoryScope clScope;
    CStringSearch clSearch(svName);
    // The library would take a null character for the end, and overlook a byte-order mark.
    if (svJson.find('\0') != svJson.npos || svJson.starts_with("\xEF\xBB\xBF") ||
        !nlohmann::json::sax_parse(svJson, &clSearch) || !clSearch.csGetFound()) {
        return std::nullopt;
    }
    return csFromUTF8(*clSearch.csGetFound());
} catch (const std::exception&) {
    return NoMemory(std::optional<CTString>());
}

}  // namespace kalmo
