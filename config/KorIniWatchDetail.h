#pragma once

// What a program does with the exchange that is handed to it. Not installed.

#include "config/KorIniFinding.h"
#include "config/KorIniNameListDetail.h"
#include "config/KorIniTextDetail.h"

#include <string>
#include <string_view>
#include <vector>

class CKorIniOptionExchange;

/// Notes what is asked of an exchange and set in it, and gives it its lines.
class CKorIniWatch
{
public:
    enum EUse : unsigned int
    {
        USE_ASKED = 0,
        USE_SET = 1,
        USE_REMOVED = 2
    };

    /// @param strText  the lines, which must stay
    CKorIniWatch(CKorIniNameRule oRule, std::string_view strText)
        : m_strText(strText), m_oNames(oRule)
    {
    }

    /// Watches an exchange that has no file, from now to its end, and makes it read the lines.
    void Attach(CKorIniOptionExchange& oExchange);

    /// What watches the exchange, or null.
    static CKorIniWatch* Of(const CKorIniOptionExchange& oExchange);

    void Note(EUse eUse, const SKorIniName& oName);
    void Note(const SKorIniFinding& oFinding);

    /// The lines, for an exchange that reads them: what was set and removed before is void.
    CKorIniTextLines Lines();

    const CKorIniNameList& Names() const { return m_oNames; }
    /// What was done to the option, as bits of #EUse.
    unsigned int Uses(size_t nName) const { return m_oNames.Note(nName); }
    std::vector<SKorIniFinding>& Findings() { return m_vecFindings; }

private:
    const std::string_view m_strText;
    CKorIniNameList m_oNames; ///< each with its uses
    std::vector<SKorIniFinding> m_vecFindings;
};
