#pragma once

#include "config/KorOptionExchange.h"

#include <string>
#include <unordered_map>
#include <vector>

/// Reads an INI file line by line, as the library does, and tells what becomes of each line that
/// is not plainly a header, an option, a comment or blank.
class CIniChecker : public CKorIniOptionExchange
{
public:
    using Remarks = std::vector<std::string>;

    /// @param oFile  gives the case rule; the lines come from CheckLine()
    explicit CIniChecker(CKorIniFile& oFile);

    /// Reads the next line.
    /// @return one remark for each oddity of the line
    Remarks CheckLine(const std::string& strLine);

private:
    std::string LineOf(const std::string& strOption);

    std::string m_strSection;
    size_t m_nLine = 0;
    std::unordered_map<const SOptionLine*, size_t> m_mapLineNumbers;
};
