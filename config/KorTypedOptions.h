#pragma once

/// @file
/// Options with types, limits and names: what a new program calls in its `DoOptionExchange` instead
/// of IOX_Std().
///
///     void CMyOptions::DoOptionExchange(CKorIniOptionExchange* pExchange)
///     {
///         IOX_Value(pExchange, "Log", "File", m_strFile, "gateway.log");
///         IOX_Range(pExchange, "Poll", "Interval", m_nInterval, 500, 10, 60000);
///         IOX_Enum(pExchange, "Port", "Parity", m_eParity, CKorSerial::PARITY_NONE,
///                  {{"even", CKorSerial::PARITY_EVEN}, {"none", CKorSerial::PARITY_NONE}});
///     }
///
/// **Reading.** A missing option gives the default and true. A value that is none of the type, or
/// that is excluded, gives the default and false, and adds a finding to those of the
/// CKorSafeIniFile that runs the exchange: "[Poll] Interval=abc is no whole number; 500 is used".
/// One pair of quotes around a value is taken off first.
///
/// **Writing.** A stored value that reads as the variable's is not touched: what a person wrote as
/// "0500" or "yes" stays. A value that is excluded, or that the file cannot hold, is not stored, and
/// the result is false; with CKorSafeIniFile that is a finding, which does not repeat the value, and
/// the file stays as it is. A text with white space in it, or with quotes at both ends, is stored
/// in one pair of quotes. The variable stays as it is.
///
/// The types are those of `config/KorTextValue.h` and every type that a program gives a KorReadText()
/// and a KorWriteText(). Null texts read as empty ones; an option without a name is not there and
/// cannot be stored.

#include "config/KorOptionExchange.h"
#include "config/KorTextValue.h"

#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// @addtogroup settings
/// @{

/// Why a value is not taken.
struct SKorRefusal
{
    bool m_bRange = false; ///< it is of the type, but beyond the limits
    std::string m_strWhy;  ///< such as "is no whole number"; empty for a value that is taken
};

/// One option in its exchange, as text: what the templates below have in common.
class TARVO_EXT_API CKorTypedOption
{
public:
    /// Looks the option up.
    CKorTypedOption(CKorIniOptionExchange* pExchange, const char* pszSection,
                    const char* pszOption);

    /// Whether the option is there.
    bool IsStored() const { return m_bStored; }
    /// Its value without a pair of quotes around it.
    const std::string& GetText() const { return m_strText; }

    /// Stores a value, in quotes where it needs them.
    /// @return false, with a finding, when the file cannot hold it
    bool Store(const std::string& strText);

    /// Adds a finding about the stored value. @return false
    /// @param oRefusal    why
    /// @param strDefault  the text of what is used instead
    bool RefuseStored(const SKorRefusal& oRefusal, const std::string& strDefault) const;

    /// Adds a finding about the program's value. @return false
    bool RefuseNew(const SKorRefusal& oRefusal) const;

private:
    CKorIniOptionExchange* m_pExchange;
    std::string m_strSection;
    std::string m_strOption;
    std::string m_strText;
    bool m_bStored;
};

/// A name, and the number of the first name of the same value.
struct SKorValueName
{
    std::string m_strName; ///< the name
    size_t m_nFirst;       ///< the same for all names of one value
};

/// Exchanges a variable that has one of a list of names; what IOX_Enum() is made of.
/// @param pExchange  the exchange, whose direction decides
/// @param pszSection the option's section
/// @param pszOption  the option's name
/// @param vecNames   the names
/// @param nDefault   index of the default; the number of names when it has none
/// @param rnName     index of the variable's value; the number of names when it has none
TARVO_EXT_API bool KorExchangeName(CKorIniOptionExchange* pExchange, const char* pszSection,
                                   const char* pszOption,
                                   const std::vector<SKorValueName>& vecNames, size_t nDefault,
                                   size_t& rnName);

/// What is said of a text that is no value of a type. A program may specialise it for its own types.
template <typename T>
struct TKorMismatch
{
    /// Such as "is no whole number".
    static std::string Get()
    {
        if constexpr (KorIsWholeNumber<T>)
            return "is no whole number";
        else if constexpr (std::is_same_v<T, bool>)
            return "is neither yes nor no";
        else if constexpr (std::is_floating_point_v<T>)
            return "is no number";
        else if constexpr (std::is_same_v<T, char>)
            return "is no single character";
        else if constexpr (std::is_same_v<T, CKorTimeDiff>)
            return "is no time span";
        else if constexpr (std::is_base_of_v<CKorUTCTime, T>)
            return "is no time";
        else
            return "is no value of its type";
    }
};

/// A list is no list when one of its items is wrong.
template <typename T>
struct TKorMismatch<std::vector<T>>
{
    /// Such as "has an item that is no whole number".
    static std::string Get() { return "has an item that " + TKorMismatch<T>::Get(); }
};

/// Why a text is no value of a type.
template <typename T>
SKorRefusal KorMismatch(const std::string& strText)
{
    if constexpr (KorIsWholeNumber<T>) {
        const std::string strDigits = strText.substr(strText.substr(0, 1) == "-" ? 1 : 0);
        if (!strDigits.empty() && strDigits.find_first_not_of("0123456789") == std::string::npos)
            return {true, "is not in " + KorWriteText(std::numeric_limits<T>::min()) + " to " +
                              KorWriteText(std::numeric_limits<T>::max())};
    }
    return {false, strText.empty() ? "is empty" : TKorMismatch<T>::Get()};
}

/// Whether a text reads as a value that has it as its text. A list without a text reads as an empty
/// one.
template <typename T>
bool KorReadsBack(const T& value, const std::string& strText)
{
    T read = value;
    return KorReadText(strText, read) && KorWriteText(read) == strText;
}

/// Whether a text reads as a list that has it as its text.
template <typename T>
bool KorReadsBack(const std::vector<T>& vecValue, const std::string& strText)
{
    std::vector<T> vecRead;
    return KorReadText(strText, vecRead) && vecRead.size() == vecValue.size();
}

/// Exchanges a variable whose values have to pass a test; what IOX_Value() and IOX_Range() are made
/// of.
/// @param pExchange     the exchange, whose direction decides
/// @param pszSection    the option's section
/// @param pszOption     the option's name
/// @param rValue        the variable
/// @param defaultValue  what to read when there is no such option, or none that can be taken
/// @param fnTest        takes a value and returns the SKorRefusal of it
template <typename T, typename TTest>
bool KorExchangeOption(CKorIniOptionExchange* pExchange, const char* pszSection,
                       const char* pszOption, T& rValue, const T& defaultValue, TTest fnTest)
{
    CKorTypedOption oOption(pExchange, pszSection, pszOption);
    T stored = rValue;
    const bool bRead = oOption.IsStored() && KorReadText(oOption.GetText(), stored);
    if (pExchange->IsWriteBack()) {
        const SKorRefusal oRefusal = fnTest(rValue);
        const std::string strText = KorWriteText(rValue);
        if (!oRefusal.m_strWhy.empty())
            return oOption.RefuseNew(oRefusal);
        if (!KorReadsBack(rValue, strText))
            return oOption.RefuseNew({false, "has no text that reads back"});
        return (bRead && KorWriteText(stored) == strText) || oOption.Store(strText);
    }

    SKorRefusal oRefusal;
    if (oOption.IsStored())
        oRefusal = bRead ? fnTest(stored) : KorMismatch<T>(oOption.GetText());
    const bool bTaken = bRead && oRefusal.m_strWhy.empty();
    rValue = bTaken ? stored : defaultValue;
    return oRefusal.m_strWhy.empty() || oOption.RefuseStored(oRefusal, KorWriteText(defaultValue));
}

/// Exchanges an option of any type that has a text.
/// @param pExchange     the exchange, whose direction decides
/// @param pszSection    the option's section
/// @param pszOption     the option's name
/// @param rValue        the variable
/// @param defaultValue  what to read when there is no such option, or none that can be taken
/// @return reading: false for a value that is none of the type; writing: false for one that is not
///         stored
template <typename T>
bool IOX_Value(CKorIniOptionExchange* pExchange, const char* pszSection, const char* pszOption,
               T& rValue, const std::common_type_t<T>& defaultValue)
{
    return KorExchangeOption(pExchange, pszSection, pszOption, rValue, defaultValue,
                             [](const T&) { return SKorRefusal(); });
}

/// Exchanges an option whose value lies between two limits, both included. The default may lie
/// beyond them.
/// @param pExchange     the exchange, whose direction decides
/// @param pszSection    the option's section
/// @param pszOption     the option's name
/// @param rValue        the variable
/// @param defaultValue  what to read when there is no such option, or none that can be taken
/// @param minimum       the least value
/// @param maximum       the greatest value
/// @return reading: false for a value that is none of the type or beyond the limits; writing: false
///         for one that is not stored
template <typename T>
bool IOX_Range(CKorIniOptionExchange* pExchange, const char* pszSection, const char* pszOption,
               T& rValue, const std::common_type_t<T>& defaultValue,
               const std::common_type_t<T>& minimum, const std::common_type_t<T>& maximum)
{
    const auto fnTest = [&minimum, &maximum](const T& value) {
        SKorRefusal oRefusal;
        if (!(minimum <= value && value <= maximum))
            oRefusal = {true,
                        "is not in " + KorWriteText(minimum) + " to " + KorWriteText(maximum)};
        return oRefusal;
    };
    return KorExchangeOption(pExchange, pszSection, pszOption, rValue, defaultValue, fnTest);
}

/// Exchanges an option whose values have names. Letters of any case read as the same name where no
/// other name differs in that alone.
/// @param pExchange   the exchange, whose direction decides
/// @param pszSection  the option's section
/// @param pszOption   the option's name
/// @param reValue     the variable
/// @param eDefault    what to read when there is no such option, or none of the names
/// @param aoNames     the names and their values; the first name of a value is the one written
/// @return reading: false for a text that is none of the names; writing: false for a value that has
///         none, or whose name is not stored
template <typename E>
bool IOX_Enum(CKorIniOptionExchange* pExchange, const char* pszSection, const char* pszOption,
              E& reValue, E eDefault, std::initializer_list<std::pair<const char*, E>> aoNames)
{
    const auto fnIndexOf = [&aoNames](E eValue) {
        size_t nName = 0;
        while (nName < aoNames.size() && aoNames.begin()[nName].second != eValue)
            ++nName;
        return nName;
    };
    std::vector<SKorValueName> vecNames;
    for (const std::pair<const char*, E>& oName : aoNames)
        vecNames.push_back({oName.first != nullptr ? oName.first : "", fnIndexOf(oName.second)});
    size_t nName = fnIndexOf(reValue);
    const bool bDone =
        KorExchangeName(pExchange, pszSection, pszOption, vecNames, fnIndexOf(eDefault), nName);
    if (!pExchange->IsWriteBack())
        reValue = nName < aoNames.size() ? aoNames.begin()[nName].second : eDefault;
    return bDone;
}

/// @}
