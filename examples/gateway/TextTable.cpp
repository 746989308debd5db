#include "examples/gateway/TextTable.h"

#include <algorithm>

namespace
{

/// How many characters of UTF-8 a text has.
std::size_t WidthOf(const std::string& strText)
{
    return static_cast<std::size_t>(std::count_if(strText.begin(), strText.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

} // namespace

std::string TextTable::ToString() const
{
    std::vector<std::size_t> vecWidths(m_vecRows[0].size());
    for (const std::vector<std::string>& vecRow : m_vecRows) {
        for (std::size_t i = 0; i < vecRow.size(); ++i)
            vecWidths[i] = std::max(vecWidths[i], WidthOf(vecRow[i]));
    }
    std::string strText;
    for (const std::vector<std::string>& vecRow : m_vecRows) {
        for (std::size_t i = 0; i < vecRow.size(); ++i)
            strText.append(vecRow[i]).append(vecWidths[i] + 2 - WidthOf(vecRow[i]), ' ');
        strText.erase(strText.find_last_not_of(' ') + 1);
        strText += '\n';
    }
    return strText;
}
