#include "JsonText.h"

#include <cstddef>

namespace
{

using Byte = unsigned char;

/// How many bytes the leading byte announces; 0 for a byte that leads none.
size_t AnnouncedLength(Byte nLead)
{
    if (nLead < 0x80)
        return 1;
    if (nLead < 0xC2 || nLead > 0xF4)
        return 0;
    return nLead < 0xE0 ? 2 : nLead < 0xF0 ? 3 : 4;
}

/// Whether the second byte makes the character neither overlong nor a surrogate nor too large.
bool FitsLead(Byte nLead, Byte nSecond)
{
    switch (nLead) {
    case 0xE0:
        return nSecond >= 0xA0;
    case 0xED:
        return nSecond < 0xA0;
    case 0xF0:
        return nSecond >= 0x90;
    case 0xF4:
        return nSecond < 0x90;
    default:
        return true;
    }
}

/// The length of the UTF-8 character that the text begins with; 0 for none.
size_t CharacterLength(std::string_view strText)
{
    const Byte nLead = static_cast<Byte>(strText[0]);
    const size_t nLength = AnnouncedLength(nLead);
    if (nLength > strText.size())
        return 0;
    for (size_t i = 1; i < nLength; ++i) {
        if ((static_cast<Byte>(strText[i]) & 0xC0) != 0x80)
            return 0;
    }
    return nLength < 2 || FitsLead(nLead, static_cast<Byte>(strText[1])) ? nLength : 0;
}

std::string Escaped(Byte nByte)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    return std::string("\\u00") + DIGITS[nByte >> 4] + DIGITS[nByte & 15];
}

} // namespace

std::string JsonText(std::string_view strText)
{
    std::string strJson = "\"";
    while (!strText.empty()) {
        const Byte nByte = static_cast<Byte>(strText[0]);
        const size_t nLength = CharacterLength(strText);
        if (nLength == 0 || nByte < ' ')
            strJson += Escaped(nByte);
        else if (nByte == '"' || nByte == '\\')
            strJson.append("\\").append(1, strText[0]);
        else
            strJson += strText.substr(0, nLength);
        strText.remove_prefix(nLength == 0 ? 1 : nLength);
    }
    return strJson + "\"";
}
