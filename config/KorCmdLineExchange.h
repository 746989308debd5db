#pragma once

/// @file
/// Reading of options from a command line.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#absent-options-read-as-0-and-values-look-like-options

#include "config/KorConfigBase.h"

#include <string>
#include <vector>

/// @addtogroup commandline
/// @{

class CKorCmdLine;

/// One reading of the options of a command line.
///
/// An argument that begins with "-" is an option; the rest of it is the option's name, case and
/// further dashes included: `--verbose` is the option named "-verbose". A flag stands alone. An
/// option with a value takes the whole next argument as its value, whatever it looks like. Every
/// other argument is positional, the program's name the first of them.
///
/// The program's handler runs twice. In the declaring pass, while IsInitialized() is false, it
/// tells with AddParamDescription() which options exist, so that positional arguments can be told
/// from the values of options. Then all arguments are restored, and in the reading pass the
/// handler fetches them: named options first, positional arguments after them, since what
/// GetParameter() fetches is taken out of the list.
class TARVO_EXT_API CKorCmdLineExchange : public CKorConfigExchange
{
public:
    /// A declared option.
    struct SOptionDesc
    {
        bool m_bHasValue;      ///< the next argument is the option's value
        std::string m_strName; ///< name without the leading "-"
    };

    /// Runs the declaring pass over the command line and takes a copy of its arguments.
    /// @param pCmdLine  the source, which must outlive the exchange; null reads as a command line
    ///                  without arguments
    explicit CKorCmdLineExchange(CKorCmdLine* pCmdLine);

    ~CKorCmdLineExchange() override;

    /// Runs the declaring pass, then restores all arguments. The constructor calls the
    /// operation of this class; an override in a derived class is called by that class.
    virtual void Initialize();

    /// Restores all arguments. Declared options stay declared.
    void CopyCmdLineArgs();

    /// False during the declaring pass, true afterwards.
    bool IsInitialized() const;

    /// Declares an option. The same name may be declared several times; it takes a value when
    /// one of its declarations says so.
    /// @param pszName    the option's name without the leading "-"; null or empty declares nothing
    /// @param bHasValue  whether the next argument is the option's value
    void AddParamDescription(const char* pszName, bool bHasValue);

    /// Fetches an option or the next positional argument.
    ///
    /// | Asked for                  | Found                        | Not found               |
    /// |----------------------------|------------------------------|-------------------------|
    /// | a flag                     | true, "1"; may be asked again| false, "0"              |
    /// | an option with a value     | true, the next argument, or  | false, "0"              |
    /// |                            | empty behind the last one;   |                         |
    /// |                            | both are taken out           |                         |
    /// | a positional argument      | true; it is taken out        | false, text unchanged   |
    ///
    /// The search for a positional argument steps over declared options and their values.
    /// An option that was not declared, a lone "-" and a negative number count as positional.
    ///
    /// @param pszName    the option's name without the leading "-"; null or empty asks for the
    ///                   next positional argument
    /// @param bHasValue  whether the option takes a value; without effect for positional arguments
    /// @param strValue   receives the text
    /// @return whether it was found
    bool GetParameter(const char* pszName, bool bHasValue, std::string& strValue);

protected:
    CKorCmdLine* m_pCmdLine;                  ///< the source, not owned, may be null
    bool m_bInitialized;                      ///< the declaring pass is over
    std::vector<SOptionDesc> m_vecOptionDesc; ///< the declared options, in order, duplicates kept
    std::vector<std::string> m_vecArgs;       ///< the arguments that were not fetched yet

private:
    /// What a positional search does with an argument.
    enum class EArgument
    {
        POSITIONAL,
        FLAG,
        OPTION_WITH_VALUE
    };

    TARVO_EXT_LOCAL EArgument Classify(const std::string& strArgument) const;
    TARVO_EXT_LOCAL bool GetOption(const std::string& strArgument, bool bHasValue,
                                   std::string& strValue);
    TARVO_EXT_LOCAL bool GetPositional(std::string& strValue);
};

/// @}
