#pragma once

/// @file
/// Values as texts: what stands in an INI file, on a command line, in a message for a person.
///
/// A new program should take these functions; KorFromString() and the stream operators of the core
/// classes are for the formats of older programs.
///
///     unsigned short nPort = 502;
///     if (!KorReadText("0x1F6", nPort)) // false for "", "70000", "5o2", " 502"
///         return false;                 // nPort is as it was
///     KorWriteText(nPort);              // "502"
///     KorWriteText(CKorTimeDiff(1500)); // "1500ms"
///
/// Reading takes the whole text or nothing: a text with anything else in it, blanks too, or a
/// number that the type cannot hold is false, and the value is unchanged. What is written reads
/// back equal. No locale has a say. All functions may be called from any thread.
///
/// A program adds a type of its own by two functions of these names in the namespace of the type.

#include "KorExport.h"
#include "time/KorIsoTime.h"
#include "time/KorTimeDiff.h"
#include "time/KorUTCTime.h"

#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// @addtogroup settings
/// @{

/// Whether a type is one of the integers that are read and written as numbers: all but `bool` and
/// the types of characters. `signed char` and `unsigned char` are numbers, `char` is a character.
template <typename T>
inline constexpr bool KorIsWholeNumber =
    std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
    !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char16_t> && !std::is_same_v<T, char32_t>;

/// @name What the functions below are made of
/// @{

/// Reads a whole number from @p nMinimum to @p nMaximum.
TARVO_EXT_API bool KorReadSigned(std::string_view strText, long long nMinimum, long long nMaximum,
                                 long long& rnValue);
/// Reads a whole number from 0 to @p nMaximum.
TARVO_EXT_API bool KorReadUnsigned(std::string_view strText, unsigned long long nMaximum,
                                   unsigned long long& rnValue);
/// The number in decimal.
TARVO_EXT_API std::string KorWriteSigned(long long nValue);
/// The number in decimal.
TARVO_EXT_API std::string KorWriteUnsigned(unsigned long long nValue);
/// The items of a list: what stands between its commas, without the blanks beside them.
TARVO_EXT_API std::vector<std::string_view> KorSplitList(std::string_view strText);
/// The items with commas between them; empty when they would not read back.
TARVO_EXT_API std::string KorJoinList(const std::vector<std::string>& vecItems);
/// What KorWriteText() writes for the types that are no numbers and no lists.
struct TARVO_EXT_API KorSimpleText
{
    /// "true" or "false".
    static std::string Of(bool bValue) { return bValue ? "true" : "false"; }
    /// The character itself.
    static std::string Of(char cValue) { return std::string(1, cValue); }
    /// The shortest text that reads back; none for infinities and for what is no number.
    static std::string Of(float nValue);
    /// The shortest text that reads back; none for infinities and for what is no number.
    static std::string Of(double nValue);
    /// A whole number of the largest unit that allows one, else microseconds with a fraction.
    static std::string Of(const CKorTimeDiff& oValue);
    /// As KorToIsoString() with as many digits as are needed; none for a year beyond 0 to 9999.
    static std::string Of(const CKorUTCTime& oValue);
};

/// @}

/// @name Reading
/// @param strText  the text
/// @param[out] rValue  the value; unchanged when the result is false
/// @return whether the text is one of the type
/// @{

/// Whole numbers: decimal digits, also with zeros in front ("0500" is 500), or "0x" and hexadecimal
/// ones; "-" in front for signed types.
template <typename T, std::enable_if_t<KorIsWholeNumber<T>, int> = 0>
bool KorReadText(std::string_view strText, T& rValue)
{
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_signed_v<T>) {
        long long nValue = 0;
        if (!KorReadSigned(strText, Limits::min(), Limits::max(), nValue))
            return false;
        rValue = static_cast<T>(nValue);
    } else {
        unsigned long long nValue = 0;
        if (!KorReadUnsigned(strText, Limits::max(), nValue))
            return false;
        rValue = static_cast<T>(nValue);
    }
    return true;
}

/// true and false, yes and no, on and off, 1 and 0, in letters of any case.
TARVO_EXT_API bool KorReadText(std::string_view strText, bool& rbValue);
/// One character.
inline bool KorReadText(std::string_view strText, char& rcValue)
{
    if (strText.size() == 1)
        rcValue = strText.front();
    return strText.size() == 1;
}
/// A decimal number such as "-2", "0.5" or "1e-3", finite.
TARVO_EXT_API bool KorReadText(std::string_view strText, float& rnValue);
/// A decimal number such as "-2", "0.5" or "1e-3", finite.
TARVO_EXT_API bool KorReadText(std::string_view strText, double& rnValue);
/// Any text.
inline bool KorReadText(std::string_view strText, std::string& rstrValue)
{
    rstrValue = strText;
    return true;
}
/// A number, with a fraction if wanted, and its unit, `us`, `ms`, `s`, `min`, `h` or `d` ("1.5h"),
/// or hours, minutes and seconds ("1:02:03.25"); "-" in front. Only whole ticks of 10 ns count.
TARVO_EXT_API bool KorReadText(std::string_view strText, CKorTimeDiff& roValue);
/// A time as KorFromIsoString() reads it.
inline bool KorReadText(std::string_view strText, CKorUTCTime& roValue)
{
    return KorFromIsoString(std::string(strText), roValue);
}

/// Lists: items with commas between them. Blanks beside a comma are ignored; the empty text is the
/// empty list.
template <typename T>
bool KorReadText(std::string_view strText, std::vector<T>& rvecValue)
{
    std::vector<T> vecRead;
    for (const std::string_view strItem : KorSplitList(strText)) {
        T value{};
        if (!KorReadText(strItem, value))
            return false;
        vecRead.push_back(std::move(value));
    }
    rvecValue = std::move(vecRead);
    return true;
}

/// @}

/// @name Writing
/// @return the text; empty for a value that no text stands for
/// @{

/// Whole numbers in decimal.
template <typename T, std::enable_if_t<KorIsWholeNumber<T>, int> = 0>
std::string KorWriteText(const T& value)
{
    if constexpr (std::is_signed_v<T>)
        return KorWriteSigned(value);
    else
        return KorWriteUnsigned(value);
}

/// The text itself.
inline std::string KorWriteText(const std::string& strValue)
{
    return strValue;
}

/// One of `bool`, `char`, `float`, `double`, CKorTimeDiff and CKorUTCTime, see KorSimpleText.
template <typename T,
          std::enable_if_t<std::is_same_v<T, bool> || std::is_same_v<T, char> ||
                               std::is_same_v<T, float> || std::is_same_v<T, double> ||
                               std::is_same_v<T, CKorTimeDiff> || std::is_base_of_v<CKorUTCTime, T>,
                           int> = 0>
std::string KorWriteText(const T& value)
{
    return KorSimpleText::Of(value);
}

/// Lists: the items with commas between them. An item whose text holds a comma, or a blank where a
/// comma would be beside it, has none.
template <typename T>
std::string KorWriteText(const std::vector<T>& vecValue)
{
    std::vector<std::string> vecItems;
    vecItems.reserve(vecValue.size());
    for (const T& value : vecValue)
        vecItems.push_back(KorWriteText(value));
    return KorJoinList(vecItems);
}

/// @}

/// @}
