#pragma once

#include "config/KorOptionExchange.h"

#include <string>

/// An INI document that is written when it is told to, and that notices when this fails.
class CIniDocument : public CKorIniOptionExchange
{
public:
    /// Reads the file.
    explicit CIniDocument(CKorIniFile& oFile);

    bool HasSection(const std::string& strSection);
    bool HasOption(const std::string& strSection, const std::string& strOption);

    /// Writes the file and compares it with the document.
    /// @return whether the file holds the whole document now
    bool Save();

private:
    std::string Text() const;
};

/// Whether an INI file with these names and this value reads back the same.
bool CanStandInIniFile(const std::string& strSection, const std::string& strOption,
                       const std::string& strValue);

/// All bytes of a file that can be read.
std::string FileContent(const std::string& strFile);
