#pragma once

// Changes of options in the text of an INI file. Not installed.

#include "config/KorIniNamesDetail.h"

#include <string>
#include <string_view>
#include <vector>

/// What is to become of an option or of a section.
struct SKorIniChange
{
    enum EKind
    {
        CHANGE_SET,
        CHANGE_REMOVE,
        CHANGE_REMOVE_SECTION
    };
    EKind m_eKind;
    std::string m_strSection;
    std::string m_strOption;
    std::string m_strValue;
};

/// Why an option cannot be kept by the format, as the end of a sentence; empty when it can.
std::string KorIniWhyNotStorable(const SKorIniName& oName, std::string_view strValue);

/// Makes changes, of one option each, in a text, all bytes but those of the changes staying.
/// @param rstrEdited  receives the new text when it differs
/// @return whether it differs
bool KorIniEdit(std::string_view strText, CKorIniNameRule oRule,
                const std::vector<SKorIniChange>& vecChanges, std::string& rstrEdited);
