#include "time/StreamExtension.h"

#include <istream>

namespace
{

bool IsDigit(int c)
{
    return c >= '0' && c <= '9';
}

} // namespace

unsigned GetSizedUInt(std::istream& oStream, unsigned nDigits, unsigned* pnRead, bool bStrict)
{
    unsigned nValue = 0;
    unsigned nRead = 0;
    for (; nRead < nDigits; ++nRead) {
        const int c = oStream.peek();
        if (!IsDigit(c)) {
            if (bStrict)
                oStream.setstate(std::ios_base::failbit);
            break;
        }
        oStream.get();
        nValue = nValue * 10 + static_cast<unsigned>(c - '0');
    }
    if (pnRead != nullptr)
        *pnRead = nRead;
    return nValue;
}

void SeparateChar(std::istream& oStream, const char& cSeparator, bool bStrict)
{
    if (oStream.peek() == static_cast<unsigned char>(cSeparator))
        oStream.get();
    else if (bStrict)
        oStream.setstate(std::ios_base::failbit);
}

void TryRemoveNonDigit(std::istream& oStream)
{
    if (!IsDigit(oStream.peek()))
        oStream.get();
}
