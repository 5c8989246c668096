#include "framework/x_error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <new>
#include <string>

#include "framework/conversion.h"
#include "framework/language.h"
#include "framework/memory_stream.h"

namespace kalmo {
namespace {

using eINFO = CXError::eXERROR_INFO;

// Texts of a module whose texts are in a bad way: 1 is empty, 2 costs too much memory, 3 names two arguments,
// 4 is fine; there are no others.
bool bGetBadTexts(STRessourceModule* pstRequest) {
    static constexpr unsigned char tabText[] = "%1 and %2\0fine";
    const unsigned unId = pstRequest->unNumber;
    if (unId == 2) {
        throw std::bad_alloc();
    }
    pstRequest->pbyText = unId == 4 ? tabText + 10 : tabText;
    pstRequest->unLength = unId == 4 ? 5 : unId == 3 ? 10 : 0;
    pstRequest->nUnit = 1;
    return unId <= 4;
}

constexpr STErrorDef tabBadDef[] = {
    {10, 1, 0, eERRORLEVEL::Warning}, {20, 2, 0, eERRORLEVEL::Error},    {30, 3, 0, eERRORLEVEL::Error},
    {40, 4, 0, eERRORLEVEL::Error},   {99, 777, 0, eERRORLEVEL::Severe},
};
const _stMyModuleInfo stBadTexts{&bGetBadTexts};
const STErrorModule stBadModule{7, L"bad", L"1.0", tabBadDef, &stBadTexts};

std::wstring csUser(const CXError& rcl) {
    return rcl.pszGetUserMessage();
}

std::wstring csDump(const CXError& rcl, eINFO eParts = eINFO::All) {
    return std::wstring(rcl.StringDump(eParts).svGet());
}

TEST(XError, CodesOfTheInstaller) {
    const struct {
        unsigned unCode, unResource;
        eERRORLEVEL eLevel;
        const wchar_t* pszSpanish;  ///< a piece of the message
    } tabCase[] = {
        {1, 4666, eERRORLEVEL::Error, L"\"NAME\"\nno est\u00E1 en el paquete"},
        {2, 4668, eERRORLEVEL::Error, L"\"NAME\"\nno se pudo crear"},
        {3, 4667, eERRORLEVEL::Error, L"\nNAME\nest\u00E1 da\u00F1ado"},
        {4, 4664, eERRORLEVEL::Error, L"\"NAME\"\nno se pudo leer"},
        {9, 818, eERRORLEVEL::Error, L"no se pudo procesar"},
        {105, 809, eERRORLEVEL::Severe, L"error interno"},
        {1000, 810, eERRORLEVEL::Severe, L"no est\u00E1 abierto"},
        {1001, 4665, eERRORLEVEL::Severe, L"\"NAME\"\nno se pudo instalar"},
    };
    CInformationModule::ms_nLangueFramework = LANGUE_ESPAGNOL;
    for (const auto& rst : tabCase) {
        _CXErrorModule604 clError;
        clError.SetUserError(rst.unCode, CTString(L"NAME"));
        EXPECT_EQ(clError.unGetUserErrorCode(), rst.unCode);
        EXPECT_EQ(clError.unGetUserResource(), rst.unResource);
        EXPECT_EQ(clError.eGetErrorLevel(), rst.eLevel);
        EXPECT_NE(csUser(clError).find(rst.pszSpanish), std::wstring::npos) << rst.unCode;
    }
    CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
}

TEST(XError, WhatIsMissingDegrades) {
    const wchar_t* const pszNo5 =
        L"##(CXError)-Pas de definition d'erreur dans gstErrorDef pour l'identifiant <5>##\r\n";
    const struct {
        const STErrorModule* pstModule;
        unsigned unCode, unResource;
        const wchar_t *pszMessage, *pszDebug;
    } tabCase[] = {
        {&gstErrorModule604, 5, 0, L"", pszNo5},
        {nullptr, 5, 0, L"", pszNo5},
        {&stBadModule, 99, 777, L"##(CXError)-Ressource <777> non charg\u00E9e##", L""},
        {&stBadModule, 10, 1, L"##(CXError)-Ressource <1> vide. LastError = <28>##", L""},
        {&stBadModule, 20, 2, L"<No Memory>", L""},
        {&stBadModule, 30, 3, L"%1 and %2", L""},
    };
    for (const auto& rst : tabCase) {
        CXError clError;
        errno = ENOSPC;
        clError.SetUserError(rst.pstModule, rst.unCode, L"one");
        EXPECT_EQ(clError.unGetUserResource(), rst.unResource);
        EXPECT_EQ(csUser(clError), rst.pszMessage);
        EXPECT_EQ(csDump(clError, eINFO::DebugMessages), rst.pszDebug);
    }
}

TEST(XError, MessagesAddUp) {
    CXError clError;
    clError.AddUserMessageFirst(L"first");
    clError.AddUserMessage(L"last");
    clError.SetUserErrorMessage(L"middle");
    clError.AddUserMessageFirst(L"very first");
    clError.AddUserMessage(nullptr);
    EXPECT_EQ(csUser(clError), L"very first\r\nfirst\r\nmiddle\r\nlast");
    // The arguments are kept: what the caller passed is gone when the error is shown.
    clError.SetUserError(&stBadModule, 30, std::wstring(300, L'a'), std::string("b"));
    const std::wstring csFormatted = std::wstring(300, L'a') + L" and b";
    EXPECT_EQ(csUser(clError), csFormatted);
    clError.AddUserMessage(clError.pszGetUserMessage());
    clError.ChangeUserError(&stBadModule, 20);
    EXPECT_EQ(csUser(clError), L"<No Memory>");
    clError.ChangeUserError(&stBadModule, 40);
    EXPECT_EQ(csUser(clError), L"fine\r\n" + csFormatted);
    clError.SetUserErrorCode(1234);
    clError.SetUserErrorMessage(nullptr);
    EXPECT_EQ(clError.unGetUserErrorCode(), 1234U);
    EXPECT_EQ(csUser(clError), csFormatted);
    clError.AddDebugMessage(L"two");
    clError.AddDebugMessageFirst(L"one");
    EXPECT_EQ(csDump(clError, eINFO::DebugMessages), L"one\r\ntwo\r\n");
}

TEST(XError, ItemsAreTypedAndDumpedInTheirFormat) {
    CXError clError;
    clError.AddInfo(EIT_THREAD, L"main");
    clError.AddInfo(EIT_HELPFILE, L"/h");
    clError.AddInfo(EIT_RECNUM, INT64_MIN);
    clError.AddInfo(EIT_BASECODE, -3);
    clError.AddInfo(EIT_DATAACCESS, reinterpret_cast<const void*>(std::uintptr_t{0xAB}));
    clError.AddInfo(EIT_PILETL, L"a\r\nb");
    clError.AddInfo(EIT_EXCEPTIONJAVA);
    clError.AddInfo(EIT_USERNAME, 5);  // not a text
    clError.AddInfo(EIT_XINFO, L"5");  // not a number
    clError.AddInfo(static_cast<eERRORINFOTYPE>(EIT_THREAD + 1), L"x");
    clError.AddInfo(EIT_HELPFILE, L"/%s/help");
    EXPECT_EQ(clError.nNumInfo(), 7);
    CTString cs(L"-");
    clError.DumpInfo(&cs);
    EXPECT_EQ(cs.svGet(),
              L"-EIT_THREAD : <main>\r\nEIT_HELPFILE : </%s/help>\r\nEIT_RECNUM : <-9223372036854775808>\r\n"
              L"EIT_BASECODE : <-3>\r\nEIT_DATAACCESS : <0xab>\r\nEIT_PILETL :\r\na\r\nb\r\n"
              L"EIT_EXCEPTIONJAVA\r\n");
    std::int64_t i64 = 7;
    EXPECT_FALSE(clError.bGetInfo(EIT_HELPFILE, &i64));
    EXPECT_EQ(i64, 7);
    EXPECT_TRUE(clError.bGetInfo(EIT_BASECODE, &i64));
    EXPECT_EQ(i64, -3);
    clError.DeleteInfo(EIT_RECNUM);
    EXPECT_FALSE(clError.bHasInfo(EIT_RECNUM));
    EXPECT_TRUE(clError.bHasInfo(EIT_THREAD));
}

TEST(XError, TheWholeDump) {
    CXError clError;
    clError.SetSystemErrorParam(EACCES, L"/dir/\u00E9");
    EXPECT_EQ(csDump(clError, eINFO::SystemError), L"System error 13: /dir/\u00E9: Permission denied\r\n");
    clError.SetUserError(&stBadModule, 30, L"one", L"two");
    clError.SetSystemError(ENOENT);
    clError.SetFunctionName(L"bDo");
    clError.SetDetailId(12);
    clError.SetErrorLevel(eERRORLEVEL::Warning);
    clError.AddInfo(EIT_DSTFILE, L"/\u00E9");
    clError.AddDebugMessage(L"debug");
    clError.SetUserErrorMessage(L"%1 full");
    const std::wstring csWhole =
        L"%1 full\r\nSystem error 2: No such file or directory\r\nIE=7.30\r\nModule=<bad>\r\n"
        L"Version=<1.0>\r\nLevel=1\r\nFunction=<bDo>\r\nDetail=12\r\nEIT_DSTFILE : </\u00E9>\r\ndebug\r\n";
    EXPECT_EQ(csDump(clError), csWhole);
    EXPECT_EQ(csDump(clError, eINFO::UserMessage | eINFO::Items), L"%1 full\r\nEIT_DSTFILE : </\u00E9>\r\n");
    CMemoryStream clTrace;
    EXPECT_TRUE(clError.TraceDump(&clTrace));
    const CTLBIN& rtab = clTrace.rtabGetBytes();
    EXPECT_EQ(std::string(rtab.begin(), rtab.end()), csToUTF8(csWhole).svGet());
}

TEST(XError, SubErrorsAreOwnedCopies) {
    const auto csOf = [](const wchar_t* pszRank, const std::wstring& csName, bool bMessage = true) {
        return (bMessage ? csName + L" and x\r\n" : L"") + L"IE" + pszRank +
               L"=7.30\r\nModule=<bad>\r\nVersion=<1.0>\r\nLevel=2\r\nEIT_DSTFILE : <" + csName + L">\r\n";
    };
    const auto Fill = [](CXError& rcl, const wchar_t* pszName) {
        rcl.SetUserError(&stBadModule, 30, pszName, L"x");
        rcl.AddInfo(EIT_DSTFILE, pszName);
    };
    CXError clTop;
    Fill(clTop, L"top");
    {
        CXError clMiddle;
        CXError clLeaf;
        Fill(clLeaf, L"leaf");
        Fill(clMiddle, L"middle");
        clMiddle.AddSubError(clLeaf);
        clTop.AddSubError(clMiddle);
        clTop.AddSubErrorLight(clMiddle);
        clTop.AddSubErrorNoUserMessage(clMiddle);
        clTop.AddSubErrorLightNoUserMessage(clMiddle);
        clMiddle.SetUserErrorMessage(L"changed");
    }
    EXPECT_EQ(clTop.nGetNbSubError(), 4);
    EXPECT_EQ(clTop.pclGetSubError(4), nullptr);
    const std::wstring csAlone = csOf(L"", L"top");
    const std::wstring csWhole = csAlone + csOf(L"1", L"middle") + csOf(L"1.1", L"leaf") +
                                 csOf(L"2", L"middle") + csOf(L"3", L"middle", false) +
                                 csOf(L"3.1", L"leaf") + csOf(L"4", L"middle", false);
    EXPECT_EQ(csDump(clTop), csWhole);
    CXError clCopy;
    clCopy.Copy(clTop);
    clCopy.Copy(clCopy);
    clTop.DeleteAllSubError();
    EXPECT_EQ(csDump(clTop), csAlone);
    EXPECT_EQ(csDump(clCopy), csWhole);
    clCopy.AddSubError(clCopy);
    EXPECT_EQ(csDump(*clCopy.pclGetSubError(4)), csWhole);
    clCopy.LightCopy(clTop);
    EXPECT_EQ(csDump(clCopy), csAlone);
}

TEST(XError, LivesByReferencesToo) {
    auto* pclError = new _CXErrorModule604;
    pclError->SetUserError(3, L"/archive");
    EXPECT_EQ(pclError->dwAddRef(), 2U);
    EXPECT_EQ(pclError->dwRelease(), 1U);
    EXPECT_EQ(csDump(*pclError, eINFO::Context),
              L"IE=604.3\r\nModule=<kalmoinstall>\r\nVersion=<25.0.98.0>\r\nLevel=2\r\n");
    EXPECT_EQ(pclError->dwRelease(), 0U);
}

}  // namespace
}  // namespace kalmo
