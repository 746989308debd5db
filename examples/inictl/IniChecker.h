#pragma once

#include "config/KorOptionExchange.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

/// Reads an INI file line by line, as the library does, and tells what becomes of each line that
/// is not plainly a header, an option, a comment or blank.
///
/// It keeps where each name was first, not the lines, so that no line costs a search of all.
class CIniChecker
{
public:
    using Remarks = std::vector<std::string>;

    /// @param bCaseSensitive  names that differ in case are different names
    explicit CIniChecker(bool bCaseSensitive);

    /// Reads the next line.
    /// @return one remark for each oddity of the line
    Remarks CheckLine(const std::string& strLine);

private:
    using Name = std::pair<std::string, std::string>; ///< section and option, as they compare

    void CheckPlace(const std::string& strOption, Remarks& vecRemarks);
    void Place(const std::string& strOption);
    size_t LineOf(const std::string& strOption) const;
    Name NameOf(const std::string& strOption) const;

    const bool m_bCaseSensitive;
    CKorIniOptionExchange m_oReader;
    std::string m_strSection;     ///< what the next line stands in
    std::string m_strLastSection; ///< the last one with a name that a line was placed in
    size_t m_nLine = 0;
    std::map<Name, size_t> m_mapFirstLines; ///< without option: of the section
};
