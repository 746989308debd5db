#include "app/KorApplication.h"
#include "app/KorApplicationInfo.h"
#include "app/KorConApplication.h"
#include "tests/layout/Layout.h"

#include <string>
#include <type_traits>

namespace
{

struct InfoMirror
{
    virtual ~InfoMirror() = default;
    std::string m_strApplName;
    std::string m_strApplDescription;
    std::string m_strVendorName;
    std::string m_strCopyright;
    std::string m_strContact;
    int m_nVersionMajor = 0;
    int m_nVersionMinor = 0;
    int m_nVersionPatch = 0;
};

struct InfoProbe : CKorApplicationInfo
{
    virtual void Next() {}
    static void PinMembers()
    {
        PIN_MEMBER(InfoProbe, InfoMirror, m_strApplName);
        PIN_MEMBER(InfoProbe, InfoMirror, m_strApplDescription);
        PIN_MEMBER(InfoProbe, InfoMirror, m_strVendorName);
        PIN_MEMBER(InfoProbe, InfoMirror, m_strCopyright);
        PIN_MEMBER(InfoProbe, InfoMirror, m_strContact);
        PIN_MEMBER(InfoProbe, InfoMirror, m_nVersionMajor);
        PIN_MEMBER(InfoProbe, InfoMirror, m_nVersionMinor);
        PIN_MEMBER(InfoProbe, InfoMirror, m_nVersionPatch);
    }
};
static_assert(sizeof(CKorApplicationInfo) == sizeof(InfoMirror));
static_assert(std::has_virtual_destructor_v<CKorApplicationInfo>);

struct ApplicationMirror
{
    virtual ~ApplicationMirror() = default;
    std::string m_strIniFile;
    CKorApplicationInfo m_oInfo;
    CKorLocalTime m_oStartZeit;
    CKorCmdLine m_oCmdLine;
    std::string m_strCommandLine;
    CKorMutex m_oMutex;
    int m_nAppData = 0;
    std::string m_strLogFile;
};

struct ApplicationProbe : CKorBaseApplication
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {SlotOf(&ApplicationProbe::Initialize),
                SlotOf(&ApplicationProbe::Finalize),
                SlotOf(&ApplicationProbe::DoCmdLineExchange),
                SlotOf(&ApplicationProbe::ParseCommandLine),
                SlotOf(&ApplicationProbe::Run),
                SlotOf(&ApplicationProbe::Next)};
    }
    static void PinMembers()
    {
        PIN_MEMBER(ApplicationProbe, ApplicationMirror, m_strIniFile);
        PIN_MEMBER(ApplicationProbe, ApplicationMirror, m_oInfo);
        PIN_MEMBER(ApplicationProbe, ApplicationMirror, m_oStartZeit);
        PIN_MEMBER(ApplicationProbe, ApplicationMirror, m_oCmdLine);
        PIN_MEMBER(ApplicationProbe, ApplicationMirror, m_strCommandLine);
        PIN_MEMBER(ApplicationProbe, ApplicationMirror, m_oMutex);
        PIN_MEMBER(ApplicationProbe, ApplicationMirror, m_nAppData);
        PIN_MEMBER(ApplicationProbe, ApplicationMirror, m_strLogFile);
    }
};
static_assert(sizeof(CKorBaseApplication) == sizeof(ApplicationMirror));
static_assert(std::has_virtual_destructor_v<CKorBaseApplication>);
static_assert(std::is_abstract_v<CKorBaseApplication>);

struct ConApplicationProbe : CKorConApplication
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {SlotOf(&ConApplicationProbe::Initialize),
                SlotOf(&ConApplicationProbe::Finalize),
                SlotOf(&ConApplicationProbe::DoCmdLineExchange),
                SlotOf(&ConApplicationProbe::ParseCommandLine),
                SlotOf(&ConApplicationProbe::Run),
                SlotOf(&ConApplicationProbe::InstallSignalHandlers),
                SlotOf(&ConApplicationProbe::RemoveSignalHandlers),
                SlotOf(&ConApplicationProbe::Next)};
    }
};
static_assert(sizeof(CKorConApplication) == sizeof(CKorBaseApplication));
static_assert(std::is_abstract_v<CKorConApplication>);

struct ApplExchangeMirror : CKorCmdLineExchange
{
    CKorBaseApplication* m_pAppl;
};

struct ApplExchangeProbe : CKorCmdLineApplExchange
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {SlotOf(&ApplExchangeProbe::Initialize), SlotOf(&ApplExchangeProbe::Next)};
    }
    static void PinMembers() { PIN_MEMBER(ApplExchangeProbe, ApplExchangeMirror, m_pAppl); }
};
static_assert(sizeof(CKorCmdLineApplExchange) == sizeof(ApplExchangeMirror));

} // namespace

TEST(AppLayout, SlotsOfTheIdentityRecord)
{
    ExpectInOrderBehindDestructor({SlotOf(&InfoProbe::Next)});
}

TEST(AppLayout, SlotsOfTheApplication)
{
    ExpectInOrderBehindDestructor(ApplicationProbe::Slots());
}

TEST(AppLayout, SlotsOfTheConsoleApplication)
{
    ExpectInOrderBehindDestructor(ConApplicationProbe::Slots());
}

TEST(AppLayout, SlotsOfTheCommandLineExchange)
{
    ExpectInOrderBehindDestructor(ApplExchangeProbe::Slots());
}
