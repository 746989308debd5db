#pragma once

/// @file
/// The command line as a source of options.

#include "config/KorConfigBase.h"

#include <string>
#include <vector>

/// @addtogroup commandline
/// @{

class CKorCmdLineExchange;

/// The arguments of a program.
///
/// Derive and override DoOptionExchange(CKorCmdLineExchange*) to read the program's options:
///
///     class CMyCmdLine : public CKorCmdLine
///     {
///     public:
///         using CKorCmdLine::DoOptionExchange;
///         void DoOptionExchange(CKorCmdLineExchange* pExchange) override
///         {
///             pExchange->AddParamDescription("p", true);
///             if (pExchange->IsInitialized())
///                 pExchange->GetParameter("p", true, m_strPort);
///         }
///         std::string m_strPort;
///     };
class TARVO_EXT_API CKorCmdLine : public CKorConfigBase
{
public:
    /// A command line without arguments.
    CKorCmdLine();

    /// As Initialize().
    CKorCmdLine(int argc, char** argv);

    ~CKorCmdLine() override;

    /// Replaces the arguments by `argv[0]` to `argv[argc - 1]`, unchanged. None remain when
    /// @p argc is less than 1 or @p argv is null.
    /// @throws std::logic_error "basic_string::_S_construct NULL not valid" for a null entry;
    ///         the entries before it are kept
    void Initialize(int argc, char** argv);

    /// Calls DoOptionExchange(CKorCmdLineExchange*) twice: once to declare options, once to read
    /// them. See CKorCmdLineExchange.
    /// @param bWriteBack  without effect, a command line is never written
    /// @return true
    bool UpdateOptions(bool bWriteBack) override;

    /// Passes the exchange on to the typed overload.
    /// @param pExchange  a CKorCmdLineExchange
    void DoOptionExchange(CKorConfigExchange* pExchange) override;

    /// Declares and reads the program's options. Does nothing here.
    virtual void DoOptionExchange(CKorCmdLineExchange* pExchange);

protected:
    std::vector<std::string> m_vecArgs; ///< all arguments, the program's name included

    /// The exchange works on a copy of the arguments.
    friend class CKorCmdLineExchange;
};

/// @}
