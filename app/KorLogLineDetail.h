#pragma once

#include <cstddef>

/// A line of the log in the making. What does not fit is left out, and "..." says so.
class CKorLogLine
{
public:
    static constexpr std::size_t MAX_LENGTH = 8192; ///< line feed included

    /// Begins anew.
    void Clear();
    /// Adds a text as it is.
    void Add(const char* pszText);
    /// Adds local time, its offset and a blank: "2026-11-21 14:15:43.123 +0100 ".
    void AddTime();
    /// Adds local time and a blank as syslog wants it: "Nov  1 14:15:43 ".
    void AddSyslogTime();
    /// Adds a message without its final line feed, control characters made visible.
    void AddMessage(const char* pText, std::size_t nLength);
    /// Ends the line with a line feed.
    void End();

    const char* Bytes() const { return m_acBytes; }
    std::size_t Length() const { return m_nLength; }

private:
    void AddUnit(const char* pUnit, std::size_t nLength);

    char m_acBytes[MAX_LENGTH];
    std::size_t m_nLength;
    std::size_t m_nCut; // the length to which a line that is too long is cut
    bool m_bTooLong;
};
