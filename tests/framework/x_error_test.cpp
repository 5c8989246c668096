#include "framework/x_error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <new>
#include <string>

#include "framework/memory_stream.h"

namespace kalmo {
namespace {

using eINFO = CXError::eXERROR_INFO;

// Texts of a module in a bad way: 1 is empty, 2 costs too much memory, 3 names two arguments.
bool bGetBadTexts(STRessourceModule* pstRequest) {
    static constexpr unsigned char tabText[] = "%1 and %2";
    if (pstRequest->unNumber == 2) {
        throw std::bad_alloc();
    }
    pstRequest->pbyText = tabText;
    pstRequest->unLength = pstRequest->unNumber == 3 ? sizeof tabText : 0;
    pstRequest->nUnit = 1;
    return pstRequest->unNumber <= 3;
}

constexpr STErrorDef tabBadDef[] = {{10, 1, 0, eERRORLEVEL::Warning},
                                    {20, 2, 0, eERRORLEVEL::Error},
                                    {30, 3, 0, eERRORLEVEL::Error},
                                    {99, 777, 0, eERRORLEVEL::Severe}};
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
        unsigned unCode, unResource, unLevel;
        const wchar_t* pszPiece;  ///< of the message
    } tabCase[] = {{1, 4666, 2, L"NAME"},   {2, 4668, 2, L"NAME"},   {3, 4667, 2, L"NAME"},
                   {4, 4664, 2, L"NAME"},   {9, 818, 2, L"process"}, {105, 809, 3, L"internal"},
                   {1000, 810, 3, L"open"}, {1001, 4665, 3, L"NAME"}};
    for (const auto& rst : tabCase) {
        _CXErrorModule604 clError;
        clError.SetUserError(rst.unCode, CTString(L"NAME"));
        EXPECT_EQ(clError.unGetUserErrorCode(), rst.unCode);
        EXPECT_EQ(clError.unGetUserResource(), rst.unResource);
        EXPECT_EQ(static_cast<unsigned>(clError.eGetErrorLevel()), rst.unLevel);
        EXPECT_NE(csUser(clError).find(rst.pszPiece), std::wstring::npos) << rst.unCode;
    }
}

TEST(XError, WhatIsMissingDegrades) {
    const struct {
        unsigned unCode, unResource;
        const wchar_t *pszMessage, *pszDebug;
    } tabCase[] = {
        {5, 0, L"", L"##(CXError)-Pas de definition d'erreur dans gstErrorDef pour l'identifiant <5>##\r\n"},
        {99, 777, L"##(CXError)-Ressource <777> non charg\u00E9e##", L""},
        {10, 1, L"##(CXError)-Ressource <1> vide. LastError = <28>##", L""},
        {20, 2, L"<No Memory>", L""},
        {30, 3, L"%1 and %2", L""},
    };
    for (const auto& rst : tabCase) {
        CXError clError;
        errno = ENOSPC;
        clError.SetUserError(&stBadModule, rst.unCode, L"one");
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
    EXPECT_EQ(csUser(clError), L"very first\r\nfirst\r\nmiddle\r\nlast");
    // The arguments are kept: what the caller passed is gone when the error is shown.
    const std::wstring csLong(300, L'a');
    clError.SetUserError(&stBadModule, 30, std::wstring(csLong), std::string("b"));
    EXPECT_EQ(csUser(clError), csLong + L" and b");
    clError.ChangeUserError(&stBadModule, 20);
    EXPECT_EQ(csUser(clError), L"<No Memory>");
}

TEST(XError, ItemsAreTyped) {
    CXError clError;
    clError.AddInfo(EIT_HELPFILE, L"replaced");
    clError.AddInfo(EIT_RECNUM, INT64_MIN);
    clError.AddInfo(EIT_DATAACCESS, reinterpret_cast<const void*>(std::uintptr_t{0xAB}));
    clError.AddInfo(EIT_PILETL, L"a\r\nb");
    clError.AddInfo(EIT_EXCEPTIONJAVA);
    clError.AddInfo(EIT_USERNAME, 5);  // not a text
    clError.AddInfo(EIT_XINFO, L"5");  // not a number
    clError.AddInfo(static_cast<eERRORINFOTYPE>(EIT_THREAD + 1), L"x");
    clError.AddInfo(EIT_HELPFILE, L"/%s/help");
    CTString cs;
    clError.DumpInfo(&cs);
    EXPECT_EQ(cs.svGet(),
              L"EIT_HELPFILE : </%s/help>\r\nEIT_RECNUM : <-9223372036854775808>\r\n"
              L"EIT_DATAACCESS : <0xab>\r\nEIT_PILETL :\r\na\r\nb\r\nEIT_EXCEPTIONJAVA\r\n");
    std::int64_t i64 = 7;
    EXPECT_FALSE(clError.bGetInfo(EIT_HELPFILE, &i64));
    EXPECT_TRUE(clError.bGetInfo(EIT_RECNUM, &i64));
    EXPECT_EQ(i64, INT64_MIN);
    clError.DeleteInfo(EIT_RECNUM);
    EXPECT_FALSE(clError.bHasInfo(EIT_RECNUM));
    EXPECT_EQ(clError.nNumInfo(), 4);
}

TEST(XError, TheWholeDump) {
    CXError clError;
    clError.SetUserError(&stBadModule, 30, L"one", L"two");
    clError.SetSystemErrorParam(ENOENT, L"/dir/\u00E9");
    clError.SetFunctionName(L"bDo");
    clError.SetDetailId(12);
    clError.SetErrorLevel(eERRORLEVEL::Warning);
    clError.AddInfo(EIT_DSTFILE, L"/\u00E9");
    clError.AddDebugMessage(L"two");
    clError.AddDebugMessageFirst(L"one");
    clError.SetUserErrorMessage(L"%1 full");
    CMemoryStream clTrace;
    EXPECT_TRUE(clError.TraceDump(&clTrace));
    const CTLBIN& rtab = clTrace.rtabGetBytes();
    EXPECT_EQ(
        std::string(rtab.begin(), rtab.end()),
        "%1 full\r\nSystem error 2: /dir/\xC3\xA9: No such file or directory\r\nIE=7.30\r\nModule=<bad>\r\n"
        "Version=<1.0>\r\nLevel=1\r\nFunction=<bDo>\r\nDetail=12\r\nEIT_DSTFILE : </\xC3\xA9>\r\n"
        "one\r\ntwo\r\n");
}

TEST(XError, SubErrorsAreOwnedCopies) {
    CXError clTop;
    clTop.SetUserErrorMessage(L"top");
    {
        CXError clMiddle;
        clMiddle.SetUserErrorMessage(L"middle");
        CXError clLeaf;
        clLeaf.SetUserError(&stBadModule, 30, L"leaf", L"x");
        clMiddle.AddSubError(clLeaf);
        clTop.AddSubError(clMiddle);
        clTop.AddSubErrorLight(clMiddle);
        clTop.AddSubErrorNoUserMessage(clMiddle);
        clTop.AddSubErrorLightNoUserMessage(clMiddle);
        clMiddle.SetUserErrorMessage(L"changed");
    }
    EXPECT_EQ(clTop.nGetNbSubError(), 4);
    const auto csLeaf = [](const std::wstring& csRank) {
        return L"leaf and x\r\nIE" + csRank + L"=7.30\r\nModule=<bad>\r\nVersion=<1.0>\r\nLevel=2\r\n";
    };
    const std::wstring csWhole = L"top\r\nmiddle\r\n" + csLeaf(L"1.1") + L"middle\r\n" + csLeaf(L"3.1");
    EXPECT_EQ(csDump(clTop), csWhole);
    CXError clCopy;
    clCopy.Copy(clTop);
    clTop.DeleteAllSubError();
    EXPECT_EQ(csDump(clTop), L"top\r\n");
    EXPECT_EQ(csDump(clCopy), csWhole);
    clTop.AddSubError(clCopy);
    clCopy.LightCopy(clTop);
    EXPECT_EQ(csDump(clCopy), L"top\r\n");
}

}  // namespace
}  // namespace kalmo
