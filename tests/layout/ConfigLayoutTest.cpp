#include "config/KorCmdLine.h"
#include "config/KorCmdLineExchange.h"
#include "config/KorConfigBase.h"
#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"
#include "tests/layout/Layout.h"

#include <string>
#include <type_traits>

namespace
{

struct SourceProbe : CKorConfigBase
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {SlotOf(&SourceProbe::UpdateOptions), SlotOf(&SourceProbe::DoOptionExchange),
                SlotOf(&SourceProbe::Next)};
    }
};
static_assert(sizeof(CKorConfigBase) == sizeof(void*));
static_assert(std::has_virtual_destructor_v<CKorConfigBase>);
static_assert(std::is_abstract_v<CKorConfigBase>);

struct ExchangeMirror
{
    virtual ~ExchangeMirror() = default;
    bool m_bModified = false;
    bool m_bWriteBack = false;
};

struct ExchangeProbe : CKorConfigExchange
{
    virtual void Next() {}
    static void PinMembers()
    {
        PIN_MEMBER(ExchangeProbe, ExchangeMirror, m_bModified);
        PIN_MEMBER(ExchangeProbe, ExchangeMirror, m_bWriteBack);
    }
};
static_assert(sizeof(CKorConfigExchange) == sizeof(ExchangeMirror));
static_assert(std::has_virtual_destructor_v<CKorConfigExchange>);

struct CmdLineMirror : CKorConfigBase
{
    std::vector<std::string> m_vecArgs;
};

struct CmdLineProbe : CKorCmdLine
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        using Inherited = void (CKorCmdLine::*)(CKorConfigExchange*);
        using Own = void (CKorCmdLine::*)(CKorCmdLineExchange*);
        return {SlotOf(&CmdLineProbe::UpdateOptions),
                SlotOf(static_cast<Inherited>(&CmdLineProbe::DoOptionExchange)),
                SlotOf(static_cast<Own>(&CmdLineProbe::DoOptionExchange)),
                SlotOf(&CmdLineProbe::Next)};
    }
    static void PinMembers() { PIN_MEMBER(CmdLineProbe, CmdLineMirror, m_vecArgs); }
};
static_assert(sizeof(CKorCmdLine) == sizeof(CmdLineMirror));

struct CmdLineExchangeMirror : CKorConfigExchange
{
    CKorCmdLine* m_pCmdLine;
    bool m_bInitialized;
    std::vector<CKorCmdLineExchange::SOptionDesc> m_vecOptionDesc;
    std::vector<std::string> m_vecArgs;
};

struct CmdLineExchangeProbe : CKorCmdLineExchange
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        return {SlotOf(&CmdLineExchangeProbe::Initialize), SlotOf(&CmdLineExchangeProbe::Next)};
    }
    static void PinMembers()
    {
        PIN_MEMBER(CmdLineExchangeProbe, CmdLineExchangeMirror, m_pCmdLine);
        PIN_MEMBER(CmdLineExchangeProbe, CmdLineExchangeMirror, m_bInitialized);
        PIN_MEMBER(CmdLineExchangeProbe, CmdLineExchangeMirror, m_vecOptionDesc);
        PIN_MEMBER(CmdLineExchangeProbe, CmdLineExchangeMirror, m_vecArgs);
    }
};
static_assert(sizeof(CKorCmdLineExchange) == sizeof(CmdLineExchangeMirror));

struct OptionDescMirror
{
    bool m_bHasValue;
    std::string m_strName;
};
using OptionDesc = CKorCmdLineExchange::SOptionDesc;
PIN_MEMBER(OptionDesc, OptionDescMirror, m_bHasValue);
PIN_MEMBER(OptionDesc, OptionDescMirror, m_strName);
static_assert(sizeof(OptionDesc) == sizeof(OptionDescMirror));

struct OptionLineMirror
{
    std::string m_strSection;
    std::string m_strOption;
    std::string m_strValue;
    std::string m_strComment;
    bool m_bSection;
};
using OptionLine = CKorIniOptionExchange::SOptionLine;
PIN_MEMBER(OptionLine, OptionLineMirror, m_strSection);
PIN_MEMBER(OptionLine, OptionLineMirror, m_strOption);
PIN_MEMBER(OptionLine, OptionLineMirror, m_strValue);
PIN_MEMBER(OptionLine, OptionLineMirror, m_strComment);
PIN_MEMBER(OptionLine, OptionLineMirror, m_bSection);
static_assert(sizeof(OptionLine) == sizeof(OptionLineMirror));

struct IniExchangeMirror : CKorConfigExchange
{
    CKorIniFile* m_pIniFile;
    std::vector<OptionLine*> m_apOptionLines;
    void* m_pDocument; ///< private
};

struct IniExchangeProbe : CKorIniOptionExchange
{
    virtual void Next() {}
    static void PinMembers()
    {
        PIN_MEMBER(IniExchangeProbe, IniExchangeMirror, m_pIniFile);
        PIN_MEMBER(IniExchangeProbe, IniExchangeMirror, m_apOptionLines);
    }
};
static_assert(sizeof(CKorIniOptionExchange) == sizeof(IniExchangeMirror));

struct IniFileMirror : CKorConfigBase
{
    std::string m_strIniFileName;
    bool m_bCaseSensitiv;
};

struct IniFileProbe : CKorIniFile
{
    virtual void Next() {}
    static std::vector<std::size_t> Slots()
    {
        using Inherited = void (CKorIniFile::*)(CKorConfigExchange*);
        using Own = void (CKorIniFile::*)(CKorIniOptionExchange*);
        return {SlotOf(&IniFileProbe::UpdateOptions),
                SlotOf(static_cast<Inherited>(&IniFileProbe::DoOptionExchange)),
                SlotOf(static_cast<Own>(&IniFileProbe::DoOptionExchange)),
                SlotOf(&IniFileProbe::Next)};
    }
    static void PinMembers()
    {
        PIN_MEMBER(IniFileProbe, IniFileMirror, m_strIniFileName);
        PIN_MEMBER(IniFileProbe, IniFileMirror, m_bCaseSensitiv);
    }
};
static_assert(sizeof(CKorIniFile) == sizeof(IniFileMirror));

} // namespace

TEST(ConfigLayout, SlotsOfTheSource)
{
    ExpectInOrderBehindDestructor(SourceProbe::Slots());
}

TEST(ConfigLayout, SlotsOfTheExchange)
{
    ExpectInOrderBehindDestructor({SlotOf(&ExchangeProbe::Next)});
}

TEST(ConfigLayout, SlotsOfTheCommandLine)
{
    ExpectInOrderBehindDestructor(CmdLineProbe::Slots());
}

TEST(ConfigLayout, SlotsOfTheCommandLineExchange)
{
    ExpectInOrderBehindDestructor(CmdLineExchangeProbe::Slots());
}

TEST(ConfigLayout, SlotsOfTheIniExchange)
{
    ExpectInOrderBehindDestructor({SlotOf(&IniExchangeProbe::Next)});
}

TEST(ConfigLayout, SlotsOfTheIniFile)
{
    ExpectInOrderBehindDestructor(IniFileProbe::Slots());
}
