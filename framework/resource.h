#ifndef KALMO_FRAMEWORK_RESOURCE_H
#define KALMO_FRAMEWORK_RESOURCE_H

#include <array>

#include "framework/format_message.h"
#include "framework/resource_block.h"
#include "framework/xy_string.h"

/// Texts by number, in the operator's language.
///
/// Every operation takes the module whose texts are meant; a null module has none. A language of 0 means the
/// current one (framework/language.h). An unknown number, one above 65535 or a text in a storage mode other
/// than 0 counts as missing: the operation then returns 0 or false and leaves its output as it was.
/// The operations may be called before DLLRES_bInit and after DLLRES_Term. Not safe across threads.
namespace kalmo {

using HINSTANCE = void*;  ///< A module of the dynamic loader (dlopen); null is the program itself.

/// A module that has texts.
struct _stMyModuleInfo {
    bool (*bGetRes)(STRessourceModule* pstRequest);  ///< Answers every request of the module.
    bool bInit = false;                              ///< Between DLLRES_bInit and DLLRES_Term.
};

/// This program's module.
extern _stMyModuleInfo gstMyModuleInfo604;

/// Marks this program's module initialised. Always true. The arguments are not used.
bool DLLRES_bInit(HINSTANCE hInstance, int nReserved);
/// Ends it and removes an installed override.
void DLLRES_Term();

/// Writes a text into a buffer of nSize characters, its terminating zero included. Returns the text's length;
/// nSize - 1 when the text was cut to fit; 0 when it is missing, or when there is no room at all.
int DLLRES_nLoadString(const _stMyModuleInfo* pstModule, unsigned unId, wchar_t* pszBuffer, int nSize,
                       int nLangue);
/// The whole text.
bool DLLRES_bLoadString(const _stMyModuleInfo* pstModule, unsigned unId, CTString* pcsOut, int nLangue = 0);
/// How the module stores a text: its unit of 1 or 2 bytes, plus 16 times its storage mode. 0 when it is
/// missing.
int DLLRES_nGetUtilisation(const _stMyModuleInfo* pstModule, unsigned unId, int nLangue = 0);

/// The formatting step alone: the message of a template, see FormatMessage for result and failure.
/// The caller frees *ppszOut with LocalFree.
unsigned DLLRES_dwFormatMessage(const wchar_t* pszFormat, wchar_t** ppszOut, CFormatArgList tabArg);

/// The text as a template (see bFormatMessage) with its inserts filled in. False, with the output untouched,
/// when the text is missing or cannot be formatted with these arguments.
bool DLLRES_bFormatMessageList(const _stMyModuleInfo* pstModule, unsigned unId, CTString* pcsOut,
                               CFormatArgList tabArg);
/// The same into a new buffer that the caller frees with LocalFree; returns the length. 0 with a null pointer
/// in *ppszResult is the failure.
int DLLRES_nFormatMessageList(const _stMyModuleInfo* pstModule, unsigned unId, wchar_t** ppszResult,
                              CFormatArgList tabArg);
/// The same with one form of the text, the forms being its lines: 0 the singular, 1 the plural. False too
/// when the text has no such line.
bool DLLRES_bFormatMessageSingulierPlurielList(const _stMyModuleInfo* pstModule, int nForm, unsigned unId,
                                               CTString* pcsOut, CFormatArgList tabArg);

/// The three above with the arguments written out; anything that makes a CFormatArg will do.
template <class... TArg>
bool DLLRES_bFormatMessage(const _stMyModuleInfo* pstModule, unsigned unId, CTString* pcsOut,
                           const TArg&... arg) {
    const std::array<CFormatArg, sizeof...(TArg)> tabArg{CFormatArg(arg)...};
    return DLLRES_bFormatMessageList(pstModule, unId, pcsOut, tabArg);
}
template <class... TArg>
int DLLRES_nFormatMessage(const _stMyModuleInfo* pstModule, unsigned unId, wchar_t** ppszResult,
                          const TArg&... arg) {
    const std::array<CFormatArg, sizeof...(TArg)> tabArg{CFormatArg(arg)...};
    return DLLRES_nFormatMessageList(pstModule, unId, ppszResult, tabArg);
}
template <class... TArg>
bool DLLRES_bFormatMessageSingulierPluriel(const _stMyModuleInfo* pstModule, int nForm, unsigned unId,
                                           CTString* pcsOut, const TArg&... arg) {
    const std::array<CFormatArg, sizeof...(TArg)> tabArg{CFormatArg(arg)...};
    return DLLRES_bFormatMessageSingulierPlurielList(pstModule, nForm, unId, pcsOut, tabArg);
}

/// A source of texts that is asked before the blocks: writes at most nSize characters, terminating zero
/// included, and returns the length without it; nSize - 1 when the text was cut; 0 or less when it has none.
using PFNLoadStringTVM = int (*)(unsigned unId, wchar_t* pszBuffer, int nSize, int nLangue);
/// Installs an override of every load, for all modules; null removes it.
void DLLRES_SetLoadStringTVM(PFNLoadStringTVM pfnLoadString);

/// What another module hands to CommandeComposante.
#pragma pack(push, 4)
struct STRequeteComposante {
    unsigned unNumber = 0;  ///< commands 3, 4: number of the text
    union {
        wchar_t* pszBuffer = nullptr;    ///< command 3: receives the text
        PFNLoadStringTVM pfnLoadString;  ///< command 2: the override
    };
    int nSize = 0;    ///< command 3: room of the buffer in characters
    int nLength = 0;  ///< command 3, out: length of the text
};
#pragma pack(pop)
static_assert(sizeof(STRequeteComposante) == 20, "modules that are built apart agree on this size");

constexpr int COMMANDE_SET_LOAD_STRING = 2;
constexpr int COMMANDE_LOAD_STRING = 3;
constexpr int COMMANDE_GET_UTILISATION = 4;

/// The entry point through which another module drives this program's texts. Command 2 installs an override
/// and returns 1; 3 loads a text in the current language and returns 1, or 0 when it is missing; 4 returns
/// DLLRES_nGetUtilisation. Any other command and a null request return 0.
int CommandeComposante(int nCommand, STRequeteComposante* pstRequest);

using PFNCommandeComposante = int (*)(int nCommand, STRequeteComposante* pstRequest);
/// Makes another module get its texts ready: calls it with command 3 and an empty request. False, and nothing
/// is called, for a null pointer.
bool DLLRES_bForceInitRessource(PFNCommandeComposante pfnCallback);

/// A resource of a loadable module, by the function "DLLRES_pLoadResourceModule" that the module exports:
/// what that returns, or null when there is no such function. Its arguments are passed on.
void* DLLRES_pLoadResource(const _stMyModuleInfo* pstModule, HINSTANCE hInstance, unsigned unId,
                           const wchar_t* pszType);
/// The form of that exported function.
using PFNLoadResourceModule = void* (*)(const _stMyModuleInfo* pstModule, HINSTANCE hInstance, unsigned unId,
                                        const wchar_t* pszType);

}  // namespace kalmo

#endif
