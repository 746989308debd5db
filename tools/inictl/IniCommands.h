#pragma once

#include "app/KorApplicationInfo.h"

#include <string>
#include <vector>

enum EExitStatus
{
    STATUS_DONE = 0,
    STATUS_NOT_FOUND = 1,
    STATUS_FINDINGS = 1,
    STATUS_DIFFERENT = 1,
    STATUS_ERROR = 2
};

using Words = std::vector<std::string>;

/// A command of the program.
struct SCommand
{
    const char* pszName;
    const char* pszOperands; ///< how the help shows them
    size_t nLeast;           ///< operands, the file first; 0 for a command that reads its own
    size_t nStep;            ///< how many more may follow at a time; 0 for none
    int (*pfnRun)(bool bCaseSensitive, const Words& vecOperands); ///< returns the exit status

    bool Takes(size_t nOperands) const;
};

/// The command with the name, or null.
const SCommand* FindCommand(const std::string& strName);

/// Tells the reason on the standard error. @return the status
int Fail(const std::string& strReason, EExitStatus nStatus);

/// Who the program is, for an option parser that reads the command line of this name.
CKorApplicationInfo Identity(const char* pszName);
