#pragma once

// How findings about an INI file are worded and where they are placed. Not installed.

#include "config/KorIniFinding.h"
#include "config/KorIniNameListDetail.h"

#include <initializer_list>
#include <string_view>

/// The name as a person reads it: "[Section] Option", with "?" for what does not print.
std::string KorIniLabel(const SKorIniName& oName);

/// Puts "?" in the place of what does not print.
void KorIniMakePrintable(std::string& rstrText);

/// A finding about an option, or about a section when the option is empty.
SKorIniFinding KorIniFindingOf(SKorIniFinding::EKind eKind, unsigned int nLine,
                               const SKorIniName& oName,
                               std::initializer_list<std::string_view> lstText);

void KorIniAdd(std::vector<SKorIniFinding>& rvecFindings, SKorIniFinding oFinding);

/// The refusal of an option that the format cannot hold.
SKorIniFinding KorIniNotStorable(const SKorIniName& oName, std::string_view strWhy);

/// A failure of the system.
SKorIniFinding KorIniFailure(const char* pszDoing, int nError);

/// Gives findings about options the numbers of the lines in force.
void KorIniAddLineNumbers(std::string_view strText, CKorIniNameRule oRule,
                          std::vector<SKorIniFinding>& rvecFindings);

/// Adds a finding for each option that is not among the known ones.
void KorIniAddUnknown(std::string_view strText, CKorIniNameRule oRule,
                      const CKorIniNameList& oKnown, std::vector<SKorIniFinding>& rvecFindings);
