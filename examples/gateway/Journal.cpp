#include "Journal.h"

#include <algorithm>
#include <cerrno>

namespace
{

constexpr std::uint32_t WINDOW = 65536;
constexpr std::size_t MAX_UNWRITTEN = 65536;

} // namespace

bool Journal::Open(const std::string& strFile, std::uint32_t nMaxSize)
{
    if (!m_oFile.Open(strFile))
        return false;
    m_nMaxSize = nMaxSize;
    ReadMarks();
    m_deqIndex.clear();
    m_strUnwritten.clear();
    Scan();
    Sort();
    m_nEnd = m_deqIndex.empty() ? JOURNAL_HEADER
                                : m_deqIndex.back().m_nPlace + m_deqIndex.back().m_nSize;
    m_nNewest = m_deqIndex.empty() ? 0 : m_deqIndex.back().m_nSequence;
    Forget(m_oMarks.m_nDone);
    return true;
}

void Journal::ReadMarks()
{
    m_oMarks = {};
    m_nGeneration = 0;
    for (const std::uint32_t nPlace : {0U, JOURNAL_MARKS_SPACING}) {
        std::uint64_t nGeneration = 0;
        JournalMarks oMarks;
        if (DecodeJournalMarks(m_oFile.Read(nPlace, JOURNAL_MARKS_SIZE), nGeneration, oMarks) &&
            nGeneration > m_nGeneration) {
            m_nGeneration = nGeneration;
            m_oMarks = oMarks;
        }
    }
}

bool Journal::SetMarks(const JournalMarks& oMarks)
{
    const std::uint64_t nGeneration = m_nGeneration + 1;
    const std::uint32_t nPlace = nGeneration % 2 == 0 ? 0 : JOURNAL_MARKS_SPACING;
    if (!m_oFile.Write(nPlace, EncodeJournalMarks(nGeneration, oMarks)))
        return false;
    m_nGeneration = nGeneration;
    m_oMarks = oMarks;
    return true;
}

// Reads the file in windows, of which each but the first begins where the one before had room for
// no whole header any more, or behind its last record.
void Journal::Scan()
{
    const std::uint32_t nSize = m_oFile.Size();
    for (std::uint32_t nPlace = JOURNAL_HEADER; nPlace + JOURNAL_RECORD_HEADER <= nSize;) {
        const std::string strWindow = m_oFile.Read(nPlace, WINDOW);
        if (strWindow.size() < JOURNAL_RECORD_HEADER)
            nPlace += JOURNAL_HEADER; // what cannot be read is passed over by pages
        else
            nPlace = FindFrom(nPlace, strWindow, 0);
    }
}

std::uint32_t Journal::FindFrom(std::uint32_t nPlace, std::string_view strWindow,
                                std::size_t nBegin)
{
    while (nBegin + JOURNAL_RECORD_HEADER <= strWindow.size()) {
        const auto nHere = nPlace + static_cast<std::uint32_t>(nBegin);
        const std::uint32_t nSize = AnnouncedJournalRecordSize(strWindow.substr(nBegin));
        JournalRecord oRecord;
        if (nSize != 0 && ReadAt(nHere, oRecord)) {
            m_deqIndex.push_back({oRecord.m_nSequence, nHere, nSize});
            nBegin += nSize;
        } else {
            nBegin += JOURNAL_ALIGNMENT;
        }
    }
    return nPlace + static_cast<std::uint32_t>(nBegin);
}

void Journal::Sort()
{
    const auto fnBefore = [](const Entry& oLeft, const Entry& oRight) {
        return oLeft.m_nSequence < oRight.m_nSequence;
    };
    const auto fnSame = [](const Entry& oLeft, const Entry& oRight) {
        return oLeft.m_nSequence == oRight.m_nSequence;
    };
    std::sort(m_deqIndex.begin(), m_deqIndex.end(), fnBefore);
    m_deqIndex.erase(std::unique(m_deqIndex.begin(), m_deqIndex.end(), fnSame), m_deqIndex.end());
}

std::uint64_t Journal::Missing(std::uint64_t nLast) const
{
    std::uint64_t nMissing = 0;
    for (const Entry& oEntry : m_deqIndex) {
        const std::uint64_t nGap = oEntry.m_nSequence - nLast - 1;
        if (nLast != 0 && nGap < JOURNAL_RUN && oEntry.m_nSequence % JOURNAL_RUN != 0)
            nMissing += nGap;
        nLast = oEntry.m_nSequence;
    }
    return nMissing;
}

bool Journal::Append(const JournalRecord& oRecord)
{
    const std::uint32_t nSize = JournalRecordSize(oRecord.m_strContent.size());
    if (oRecord.m_strContent.size() > JOURNAL_MAX_CONTENT || nSize + JOURNAL_HEADER > m_nMaxSize) {
        errno = EFBIG;
        return false;
    }
    const bool bWrap = m_nEnd + nSize > m_nMaxSize;
    if ((bWrap || m_deqIndex.empty() || m_strUnwritten.size() > MAX_UNWRITTEN) && !Write())
        return false;
    MakeRoom(nSize);
    // Where memory ends, neither has the record.
    const std::string strRecord =
        EncodeJournalRecord(m_nEnd, oRecord.m_nSequence, oRecord.m_strContent);
    m_strUnwritten.reserve(m_strUnwritten.size() + strRecord.size());
    m_deqIndex.push_back({oRecord.m_nSequence, m_nEnd, nSize});
    m_strUnwritten += strRecord;
    m_nEnd += nSize;
    m_nNewest = oRecord.m_nSequence;
    return true;
}

bool Journal::Write()
{
    const auto nBegin = m_nEnd - static_cast<std::uint32_t>(m_strUnwritten.size());
    const bool bWritten = m_strUnwritten.empty() || m_oFile.Write(nBegin, m_strUnwritten);
    if (!bWritten) {
        for (; !m_deqIndex.empty() && m_deqIndex.back().m_nPlace >= nBegin &&
               m_deqIndex.back().m_nPlace < m_nEnd;
             m_deqIndex.pop_back())
            m_nNewest = m_deqIndex.back().m_nSequence - 1;
        m_nEnd = nBegin;
    }
    m_strUnwritten.clear();
    return bWritten;
}

void Journal::MakeRoom(std::uint32_t nSize)
{
    if (m_deqIndex.empty()) {
        m_nEnd = JOURNAL_HEADER;
        m_oFile.Truncate(m_nMaxSize);
    }
    if (m_nEnd + nSize > m_nMaxSize) {
        while (!m_deqIndex.empty() && m_deqIndex.front().m_nPlace >= m_nEnd)
            DropOldest();
        m_nEnd = JOURNAL_HEADER;
    }
    while (!m_deqIndex.empty() && m_deqIndex.front().m_nPlace >= m_nEnd &&
           m_deqIndex.front().m_nPlace < m_nEnd + nSize)
        DropOldest();
}

void Journal::DropOldest()
{
    ++m_nDropped;
    m_nNewestDropped = m_deqIndex.front().m_nSequence;
    m_deqIndex.pop_front();
}

bool Journal::ReadAt(std::uint32_t nPlace, JournalRecord& rRecord) const
{
    const std::uint32_t nSize =
        AnnouncedJournalRecordSize(m_oFile.Read(nPlace, JOURNAL_RECORD_HEADER));
    return nSize != 0 && DecodeJournalRecord(nPlace, m_oFile.Read(nPlace, nSize), rRecord);
}

bool Journal::FindAfter(std::uint64_t nSequence, JournalRecord& rRecord)
{
    const auto fnUpTo = [](std::uint64_t nLeft, const Entry& oRight) {
        return nLeft < oRight.m_nSequence;
    };
    auto iEntry = std::upper_bound(m_deqIndex.begin(), m_deqIndex.end(), nSequence, fnUpTo);
    while (iEntry != m_deqIndex.end()) {
        if (ReadAt(iEntry->m_nPlace, rRecord) && rRecord.m_nSequence == iEntry->m_nSequence)
            return true;
        ++m_nDamaged;
        iEntry = m_deqIndex.erase(iEntry);
    }
    return false;
}

void Journal::Forget(std::uint64_t nSequence)
{
    while (!m_deqIndex.empty() && m_deqIndex.front().m_nSequence <= nSequence)
        m_deqIndex.pop_front();
}
