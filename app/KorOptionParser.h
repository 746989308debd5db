#pragma once

/// @file
/// The command line of a program, as GNU programs take it. A new program takes this;
/// CKorCmdLineExchange reads the command lines of older ones.
///
///     CKorOptionParser oParser(GetInfo());
///     oParser.AddFlag("v,verbose", bVerbose, "tell more");
///     oParser.AddOption("c,config", "FILE", strConfig, "read settings from FILE");
///     oParser.AddArgument("DEVICE", strDevice, "the line to open");
///     if (oParser.Parse(argc, argv) != CKorOptionParser::PARSE_OK)
///         std::fputs(oParser.GetText().c_str(), stderr);

#include "KorExport.h"
#include "app/KorApplicationInfo.h"
#include "config/KorTextValue.h"

#include <list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// @addtogroup commandline
/// @{

/// Reads flags, options with a value and arguments into variables.
///
/// Understood are `-v`, `-vq`, `-vv`, `-c FILE`, `-cFILE`, `--config FILE` and `--config=FILE`, also
/// behind arguments; `--`, behind which all are arguments; and "-" as an argument. What stands
/// behind an option that takes a value is that value, even if it begins with "-". A negative number
/// is an argument, unless its first digit is the name of an option. A flag may be given several
/// times; an option only when its variable is a vector, to which each adds one element.
///
/// `-h`, `--help` and `--version` are there without being added; a program that adds one of these
/// names has it for itself.
///
/// Values are read by KorReadText(), so that a program may add types of its own. A variable keeps
/// its value when it is not given; that of a vector is replaced by what is given. After
/// #PARSE_WRONG some variables may have been set.
///
/// The variables must outlive the parser. An object serves one thread at a time. A null text reads
/// as the empty text.
class TARVO_EXT_API CKorOptionParser
{
public:
    /// Results of Parse().
    enum EResult
    {
        PARSE_OK,   ///< the variables are set
        PARSE_DONE, ///< help or version was asked for: GetText() is for the standard output
        PARSE_WRONG ///< wrong usage: GetText() is for the standard error, the exit status to be 2
    };

    /// A parser of nothing but help and version.
    /// @param oInfo  names the program and its version; copied
    explicit CKorOptionParser(const CKorApplicationInfo& oInfo);

    ~CKorOptionParser();
    CKorOptionParser(const CKorOptionParser&) = delete;
    CKorOptionParser& operator=(const CKorOptionParser&) = delete;

    /// Adds an option without a value.
    /// @param pszNames  its names with commas between them, such as "v,verbose": one character is
    ///                  a short name, more are a long one
    /// @param rbValue   becomes true when it is given
    /// @param pszHelp   what it does
    void AddFlag(const char* pszNames, bool& rbValue, const char* pszHelp);

    /// Adds an option with a value.
    /// @param pszNames  its names, as for AddFlag()
    /// @param pszMeta   what stands for the value in the help, such as "FILE"
    /// @param rValue    receives the value
    /// @param pszHelp   what it does
    template <typename T>
    void AddOption(const char* pszNames, const char* pszMeta, T& rValue, const char* pszHelp)
    {
        Add(KIND_OPTION, pszNames, pszMeta, pszHelp, Target(rValue));
    }

    /// Adds an argument; those that are given go to the added ones in turn, and the rest to the
    /// first one that is a vector.
    /// @param pszMeta    what stands for it in the help, such as "FILE"
    /// @param rValue     receives the value
    /// @param pszHelp    what it is
    /// @param bRequired  whether it must be given; at least once for a vector
    template <typename T>
    void AddArgument(const char* pszMeta, T& rValue, const char* pszHelp, bool bRequired = true)
    {
        Add(bRequired ? KIND_REQUIRED : KIND_ARGUMENT, "", pszMeta, pszHelp, Target(rValue));
    }

    /// Whether nothing was added.
    bool IsEmpty() const { return m_lstEntries.size() == 2; }

    /// Reads a command line.
    /// @param argc  number of entries of @p argv
    /// @param argv  the arguments, the program file first
    EResult Parse(int argc, const char* const* argv);

    /// What to print after Parse(), with its line feed: the help, the version, or a sentence such
    /// as "NAME: unknown option '-x' (try --help)"; empty after #PARSE_OK. The help is no wider
    /// than the terminal at the standard output, nor than 80 columns.
    std::string GetText() const { return m_strText; }

private:
    enum EKind
    {
        KIND_FLAG,
        KIND_OPTION,
        KIND_ARGUMENT,
        KIND_REQUIRED,
        KIND_HELP,
        KIND_VERSION
    };
    /// A variable whose type only its functions know.
    struct STarget
    {
        void* pValue;
        bool (*pfnRead)(std::string_view strText, void* pValue, bool bFirst);
        bool bRepeats;
    };
    struct SEntry
    {
        EKind eKind;
        std::vector<std::string> vecNames;
        std::string strMeta;
        std::string strHelp;
        STarget oTarget;
        unsigned int nGiven;
    };
    struct TARVO_EXT_LOCAL SHelp;

    template <typename T>
    static STarget Target(T& rValue)
    {
        return {&rValue,
                [](std::string_view strText, void* pValue, bool) {
                    return KorReadText(strText, *static_cast<T*>(pValue));
                },
                false};
    }
    template <typename T>
    static STarget Target(std::vector<T>& rvecValue)
    {
        return {&rvecValue, &ReadElement<T>, true};
    }
    template <typename T>
    static bool ReadElement(std::string_view strText, void* pValue, bool bFirst)
    {
        T value{};
        if (!KorReadText(strText, value))
            return false;
        std::vector<T>& rvecValue = *static_cast<std::vector<T>*>(pValue);
        if (bFirst)
            rvecValue.clear();
        rvecValue.push_back(std::move(value));
        return true;
    }

    void Add(EKind eKind, const char* pszNames, const char* pszMeta, const char* pszHelp,
             const STarget& oTarget);
    TARVO_EXT_LOCAL static bool IsArgument(const SEntry& oEntry);
    TARVO_EXT_LOCAL SEntry* Find(std::string_view strName);
    TARVO_EXT_LOCAL bool IsOption(std::string_view strText);
    TARVO_EXT_LOCAL bool Take(std::string_view strText);
    TARVO_EXT_LOCAL bool TakeLong(std::string_view strText);
    TARVO_EXT_LOCAL bool TakeShort(std::string_view strText);
    TARVO_EXT_LOCAL bool TakeArgument(std::string_view strText);
    TARVO_EXT_LOCAL bool Give(SEntry& roEntry, const std::string& strShown,
                              const std::string_view* pstrAttached);
    TARVO_EXT_LOCAL bool GiveValue(SEntry& roEntry, const std::string& strShown,
                                   std::string_view strText);
    TARVO_EXT_LOCAL bool Answer(const SEntry& oEntry);
    TARVO_EXT_LOCAL bool Refuse(const char* pszWhat, std::string_view strName,
                                std::string_view strWhy = "");
    TARVO_EXT_LOCAL bool CheckRequired();

    CKorApplicationInfo m_oInfo;
    std::list<SEntry> m_lstEntries; // those that were added, then help and version
    const char* const* m_ppszNext;  // what Parse() has not read yet
    const char* const* m_ppszEnd;
    bool m_bOptionsEnded;
    EResult m_eResult;
    std::string m_strText;
};

/// @}
