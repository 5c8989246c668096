#ifndef KALMO_FRAMEWORK_X_ERROR_INFO_H
#define KALMO_FRAMEWORK_X_ERROR_INFO_H

#include <cstdint>
#include <variant>
#include <vector>

#include "framework/xy_string.h"

namespace kalmo {

/// What an information item of an error tells. The order is that of the dump formats.
enum eERRORINFOTYPE {
    EIT_HELPFILE,
    EIT_USERNAME,
    EIT_DSTFILE,
    EIT_SRCFILE,
    EIT_PATHTVD,
    EIT_LOGICALTABLENAME,
    EIT_ITEMNAME,
    EIT_PATHFIC,
    EIT_PATHNDX,
    EIT_PATHMMO,
    EIT_LINKNAME,
    EIT_RECNUM,
    EIT_HLOCKTIME,
    EIT_BASEMESSAGE,
    EIT_NATIVEMESSAGE,
    EIT_ADOMESSAGE,
    EIT_BASECODE,
    EIT_NATIVECODE,
    EIT_ADOCODE,
    EIT_ODBCCODE,
    EIT_ODBCDESCRIPTION,
    EIT_DATAACCESS,
    EIT_INFOCLIENT,
    EIT_INFOSERVEUR,
    EIT_PILETL,
    EIT_PILEC,
    EIT_COMPOSANT,
    EIT_DATEHEURE,
    EIT_LOCKINFO,
    EIT_CORRIGE_ETAT,
    EIT_INFOCS,
    EIT_SERVEURCS,
    EIT_XINFO,
    EIT_TYPE_TVFILE,
    EIT_IDCODE,
    EIT_HCNXID,
    EIT_POSITION_ERREUR,
    EIT_EXCEPTION_CLASS_NAME,
    EIT_EXCEPTIONDOTNET,
    EIT_EXCEPTIONJAVA,
    EIT_CODEHTTP,
    EIT_THREAD,
};

/// The information items of an error, in the order they were added. A kind may occur several times; it has
/// one type of value: text, integer, pointer, or none (EIT_EXCEPTIONDOTNET, EIT_EXCEPTIONJAVA). Owned by its
/// CXError.
class CXErrorInfoList {
  public:
    using CValue = std::variant<std::monostate, CTString, std::int64_t, const void*>;
    struct _stERRORINFO {
        eERRORINFOTYPE eKind;
        CValue value;
    };

    /// Adds an item behind the others. False when the value is not of the kind's type.
    bool bAdd(eERRORINFOTYPE eKind, CValue value);
    /// The first item of a kind; null when there is none. Valid until the list is changed.
    [[nodiscard]] const _stERRORINFO* pstFind(eERRORINFOTYPE eKind) const noexcept;
    /// Removes all items of a kind.
    void Delete(eERRORINFOTYPE eKind) noexcept;
    [[nodiscard]] std::size_t nGetCount() const noexcept { return m_tabItem.size(); }
    /// One line "NAME : <value>" an item, each ended by CR LF. A value prints as printf does it: of an
    /// integer the low 32 bits count where the kind's format is "%d", and a null pointer is "(nil)".
    [[nodiscard]] CTString csDump() const;

  private:
    std::vector<_stERRORINFO> m_tabItem;
};

}  // namespace kalmo

#endif
