#include "framework/x_error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <sstream>
#include <string>

#include "framework/language.h"
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
    clError.AddUserMessage(L"c");
    clError.ChangeUserError(&stBadModule, 99);
    EXPECT_EQ(csUser(clError), L"##(CXError)-Ressource <777> non charg\u00E9e##\r\nc");
}

TEST(XError, ItemsPrintInTheirFormats) {
    // Every kind in its order, and behind its name the mark of a format that is another than most have.
    std::wistringstream clKinds(
        L"HELPFILE USERNAME DSTFILE SRCFILE PATHTVD LOGICALTABLENAME ITEMNAME PATHFIC PATHNDX PATHMMO "
        L"LINKNAME "
        L"RECNUM& HLOCKTIME& BASEMESSAGE NATIVEMESSAGE ADOMESSAGE BASECODE# NATIVECODE# ADOCODE# ODBCCODE "
        L"ODBCDESCRIPTION DATAACCESS* INFOCLIENT INFOSERVEUR PILETL| PILEC| COMPOSANT| DATEHEURE= LOCKINFO= "
        L"CORRIGE_ETAT= INFOCS SERVEURCS XINFO# TYPE_TVFILE# IDCODE# HCNXID# POSITION_ERREUR "
        L"EXCEPTION_CLASS_NAME EXCEPTIONDOTNET! EXCEPTIONJAVA! CODEHTTP# THREAD");
    const std::map<wchar_t, const wchar_t*> mapOther = {
        {L'#', L" : <-2147483647>"}, {L'&', L" : <6442450945>"}, {L'*', L" : <(nil)>"},
        {L'|', L" :\r\n/%s\r\nx"},   {L'=', L" : /%s\r\nx"},     {L'!', L""}};
    int nKind = 0;
    for (std::wstring cs; clKinds >> cs; ++nKind) {
        const auto eKind = static_cast<eERRORINFOTYPE>(nKind);
        CXError clError;
        // The one of them that is of the kind's type stays.
        clError.AddInfo(eKind, L"/%s\r\nx");
        clError.AddInfo(eKind, 0x180000001);
        clError.AddInfo(eKind, static_cast<const void*>(nullptr));
        clError.AddInfo(eKind);
        const auto it = mapOther.find(cs.back());
        cs = it == mapOther.end() ? cs + L" : </%s\r\nx>" : cs.substr(0, cs.size() - 1) + it->second;
        CTString csItems(L"before\r\n");
        clError.DumpInfo(&csItems);
        EXPECT_EQ(csItems.svGet(), L"before\r\nEIT_" + cs + L"\r\n");
    }
    EXPECT_EQ(nKind, EIT_THREAD + 1);
}

TEST(XError, ItemsOfOneKindAreAList) {
    CXError clError;
    clError.AddInfo(EIT_RECNUM, INT64_MIN);
    clError.AddInfo(EIT_DATAACCESS, reinterpret_cast<const void*>(std::uintptr_t{0xAB}));
    clError.AddInfo(EIT_RECNUM, 5);
    clError.AddInfo(static_cast<eERRORINFOTYPE>(EIT_THREAD + 1), L"x");
    EXPECT_EQ(csDump(clError),
              L"EIT_RECNUM : <-9223372036854775808>\r\nEIT_DATAACCESS : <0xab>\r\nEIT_RECNUM : <5>\r\n");
    std::int64_t i64 = 7;
    EXPECT_FALSE(clError.bGetInfo(EIT_DATAACCESS, &i64));
    EXPECT_TRUE(clError.bGetInfo(EIT_RECNUM, &i64));
    EXPECT_EQ(i64, INT64_MIN);
    clError.DeleteInfo(EIT_RECNUM);
    EXPECT_FALSE(clError.bHasInfo(EIT_RECNUM));
    EXPECT_EQ(clError.nNumInfo(), 1);
}

TEST(XError, TheWholeDump) {
    _CXErrorModule604 clError;
    clError.SetUserError(3, L"one");
    EXPECT_EQ(clError.unGetUserResource(), 4667U);
    EXPECT_NE(csUser(clError).find(L"one"), std::wstring::npos);
    EXPECT_EQ(clError.eGetErrorLevel(), eERRORLEVEL::Error);
    clError.SetSystemErrorParam(ENOENT, L"/dir/\u00E9");
    clError.SetFunctionName(L"bDo");
    clError.SetDetailId(12);
    clError.SetErrorLevel(eERRORLEVEL::Warning);
    clError.AddInfo(EIT_DSTFILE, L"/\u00E9");
    clError.AddDebugMessage(L"two");
    clError.AddDebugMessageFirst(L"one");
    clError.SetUserErrorMessage(L"%1 full");
    clError.SetUserErrorCode(31);
    CMemoryStream clTrace;
    EXPECT_TRUE(clError.TraceDump(&clTrace));
    const CTLBIN& rtab = clTrace.rtabGetBytes();
    EXPECT_EQ(std::string(rtab.begin(), rtab.end()),
              "%1 full\r\nSystem error 2: /dir/\xC3\xA9: No such file or directory\r\nIE=604.31\r\n"
              "Module=<kalmoinstall>\r\nVersion=<25.0.98.0>\r\nLevel=1\r\nFunction=<bDo>\r\nDetail=12\r\n"
              "EIT_DSTFILE : </\xC3\xA9>\r\none\r\ntwo\r\n");
}

TEST(XError, TheSystemErrorIsTranslated) {
    CXError clError;
    clError.SetSystemError(ENOSPC);
    EXPECT_EQ(csDump(clError), L"System error 28: No space left on device\r\n");
    clError.SetSystemErrorMessage(L"full");
    CInformationModule::ms_nLangueFramework = LANGUE_FRANCAIS;
    EXPECT_EQ(csDump(clError), L"Erreur syst\u00E8me 28 : full\r\n");
    CInformationModule::ms_nLangueFramework = LANGUE_ESPAGNOL;
    EXPECT_EQ(csDump(clError), L"Error del sistema 28: full\r\n");
    // English where the text is of no use.
    DLLRES_SetLoadStringTVM([](unsigned, wchar_t* psz, int, int) { return (*psz = L'%'), 1; });
    EXPECT_EQ(csDump(clError), L"System error 28: full\r\n");
    DLLRES_SetLoadStringTVM(nullptr);
    CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
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
    EXPECT_EQ(clTop.pclGetSubError(-1), nullptr);
    // The source may be the object itself, or one of its own.
    clTop.Copy(*clTop.pclGetSubError(0)->pclGetSubError(0));
    EXPECT_EQ(csDump(clTop), L"middle\r\n" + csLeaf(L"1"));
    clTop.AddSubErrorLight(clTop);
    clTop.AddSubError(*clTop.pclGetSubError(1));
    clTop.LightCopy(*clTop.pclGetSubError(2));
    EXPECT_EQ(csDump(clTop), L"middle\r\n");
}

}  // namespace
}  // namespace kalmo
