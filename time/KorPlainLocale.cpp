#include "time/KorPlainLocaleDetail.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <typeinfo>

namespace
{

std::atomic<const std::locale*> g_pRemembered(nullptr);

constexpr char DIGITS[] = {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};

bool HasPlainCharacters(const std::ctype<char>& oType)
{
    char acWidened[sizeof DIGITS];
    oType.widen(std::begin(DIGITS), std::end(DIGITS), acWidened);
    return std::equal(std::begin(DIGITS), std::end(DIGITS), acWidened) &&
           oType.scan_is(std::ctype_base::space, std::begin(DIGITS), std::end(DIGITS)) ==
               std::end(DIGITS) &&
           oType.is(std::ctype_base::space, ' ');
}

bool HasPlainNumbers(const std::locale& oLocale)
{
    const auto& oWriter = std::use_facet<std::num_put<char>>(oLocale);
    return typeid(oWriter) == typeid(std::num_put<char>) &&
           std::use_facet<std::numpunct<char>>(oLocale).grouping().empty() &&
           HasPlainCharacters(std::use_facet<std::ctype<char>>(oLocale));
}

void Remember(const std::locale& oLocale)
{
    if (g_pRemembered.load(std::memory_order_relaxed) != nullptr)
        return;
    const std::locale* pNew = new std::locale(oLocale);
    const std::locale* pOld = nullptr;
    if (!g_pRemembered.compare_exchange_strong(pOld, pNew, std::memory_order_release))
        delete pNew;
}

} // namespace

bool KorIsPlainLocale(const std::locale& oLocale)
{
    const std::locale* pRemembered = g_pRemembered.load(std::memory_order_acquire);
    if (pRemembered != nullptr && oLocale == *pRemembered)
        return true;
    static const std::locale& oClassic = std::locale::classic();
    if (oLocale == oClassic)
        return true;
    const bool bPlain = HasPlainNumbers(oLocale);
    if (bPlain)
        Remember(oLocale);
    return bPlain;
}
