#include "app/KorOptionHelpDetail.h"

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

constexpr size_t WIDEST = 80;
constexpr size_t NARROWEST = 20; // a narrower terminal wraps by itself
constexpr size_t GAP = 2;

/// The columns of a text in UTF-8.
size_t Columns(std::string_view strText)
{
    return static_cast<size_t>(
        std::count_if(strText.begin(), strText.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

/// The bytes of as many characters as fit in the columns.
size_t BytesOf(std::string_view strText, size_t nColumns)
{
    size_t nBytes = 0;
    while (nBytes < strText.size() && Columns(strText.substr(0, nBytes + 1)) <= nColumns)
        ++nBytes;
    return nBytes;
}

std::string_view TakeWord(std::string_view& rstrText)
{
    rstrText.remove_prefix(std::min(rstrText.find_first_not_of(" \n"), rstrText.size()));
    const std::string_view strWord = rstrText.substr(0, rstrText.find_first_of(" \n"));
    rstrText.remove_prefix(strWord.size());
    return strWord;
}

} // namespace

size_t KorHelpWidth()
{
    winsize oSize = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &oSize) != 0 || oSize.ws_col == 0)
        return WIDEST;
    return std::max(std::min<size_t>(oSize.ws_col, WIDEST), NARROWEST);
}

void KorHelpWrap(std::string& rstrHelp, std::string_view strText, size_t nColumn, size_t nIndent,
                 size_t nWidth)
{
    bool bLineBegins = true;
    for (std::string_view strWord = TakeWord(strText); !strWord.empty();) {
        const size_t nBlank = bLineBegins ? 0 : 1;
        if (!bLineBegins && nColumn + nBlank + Columns(strWord) > nWidth) {
            rstrHelp.append("\n").append(nIndent, ' ');
            nColumn = nIndent;
            bLineBegins = true;
            continue;
        }
        // A word that no line has room for is cut.
        const size_t nBytes = std::max<size_t>(BytesOf(strWord, nWidth - nColumn - nBlank), 1);
        rstrHelp.append(nBlank, ' ').append(strWord.substr(0, nBytes));
        nColumn += nBlank + Columns(strWord.substr(0, nBytes));
        bLineBegins = false;
        strWord.remove_prefix(nBytes);
        if (strWord.empty())
            strWord = TakeWord(strText);
    }
    rstrHelp += '\n';
}

void KorHelpList(std::string& rstrHelp, const std::list<SKorHelpRow>& lstRows, size_t nWidth)
{
    size_t nLongest = 0;
    for (const SKorHelpRow& oRow : lstRows)
        nLongest = std::max(nLongest, Columns(oRow.strLabel));
    const size_t nIndent = std::min(nLongest + 2 * GAP, nWidth * 2 / 5);
    for (const SKorHelpRow& oRow : lstRows) {
        const size_t nColumn = GAP + Columns(oRow.strLabel);
        rstrHelp.append(GAP, ' ');
        if (nColumn + GAP <= nIndent && !oRow.strText.empty()) {
            rstrHelp.append(oRow.strLabel).append(nIndent - nColumn, ' ');
        } else {
            KorHelpWrap(rstrHelp, oRow.strLabel, GAP, GAP, nWidth);
            rstrHelp.append(oRow.strText.empty() ? 0 : nIndent, ' ');
        }
        if (!oRow.strText.empty())
            KorHelpWrap(rstrHelp, oRow.strText, nIndent, nIndent, nWidth);
    }
}
