#include "JournalFormat.h"

#include "examples/gateway/Crc32.h"
#include "examples/gateway/LittleEndian.h"

namespace
{

constexpr std::string_view MARKS_MAGIC = "GwM1";

/// Takes the magic from the front.
bool BeginsWith(std::string_view& rstrBytes, std::string_view strMagic)
{
    const bool bBegins = rstrBytes.substr(0, strMagic.size()) == strMagic;
    if (bBegins)
        rstrBytes.remove_prefix(strMagic.size());
    return bBegins;
}

std::uint32_t RecordCrc(std::uint32_t nPlace, std::string_view strFront,
                        std::string_view strContent)
{
    std::string strChecked(strFront);
    PutNumber(strChecked, nPlace);
    return Crc32(strChecked.append(strContent));
}

} // namespace

std::uint32_t JournalRecordSize(std::size_t nContent)
{
    const auto nSize = JOURNAL_RECORD_HEADER + static_cast<std::uint32_t>(nContent);
    return (nSize + JOURNAL_ALIGNMENT - 1) / JOURNAL_ALIGNMENT * JOURNAL_ALIGNMENT;
}

std::string EncodeJournalRecord(std::uint32_t nPlace, std::uint64_t nSequence,
                                std::string_view strContent)
{
    std::string strBytes(JOURNAL_RECORD_MAGIC);
    PutNumber(strBytes, static_cast<std::uint32_t>(strContent.size()));
    PutNumber(strBytes, nSequence);
    PutNumber(strBytes, RecordCrc(nPlace, strBytes, strContent));
    strBytes += strContent;
    strBytes.resize(JournalRecordSize(strContent.size()));
    return strBytes;
}

std::uint32_t AnnouncedJournalRecordSize(std::string_view strHeader)
{
    if (strHeader.size() < JOURNAL_RECORD_HEADER || !BeginsWith(strHeader, JOURNAL_RECORD_MAGIC))
        return 0;
    const auto nContent = TakeNumber<std::uint32_t>(strHeader);
    return nContent <= JOURNAL_MAX_CONTENT ? JournalRecordSize(nContent) : 0;
}

bool DecodeJournalRecord(std::uint32_t nPlace, std::string_view strBytes, JournalRecord& rRecord)
{
    const std::uint32_t nSize = AnnouncedJournalRecordSize(strBytes);
    if (nSize == 0 || strBytes.size() < nSize)
        return false;
    std::string_view strRest = strBytes.substr(JOURNAL_RECORD_MAGIC.size());
    const auto nContent = TakeNumber<std::uint32_t>(strRest);
    const auto nSequence = TakeNumber<std::uint64_t>(strRest);
    const std::string_view strFront = strBytes.substr(0, strBytes.size() - strRest.size());
    const auto nCrc = TakeNumber<std::uint32_t>(strRest);
    const std::string_view strContent = strRest.substr(0, nContent);
    if (nCrc != RecordCrc(nPlace, strFront, strContent))
        return false;
    rRecord = {nSequence, std::string(strContent)};
    return true;
}

std::string EncodeJournalMarks(std::uint64_t nGeneration, const JournalMarks& oMarks)
{
    std::string strBytes(MARKS_MAGIC);
    PutNumber(strBytes, nGeneration);
    PutNumber(strBytes, oMarks.m_nDone);
    PutNumber(strBytes, oMarks.m_nReserved);
    PutNumber(strBytes, oMarks.m_nBoot);
    PutNumber(strBytes, Crc32(strBytes));
    return strBytes;
}

bool DecodeJournalMarks(std::string_view strBytes, std::uint64_t& rnGeneration,
                        JournalMarks& rMarks)
{
    std::string_view strRest = strBytes;
    if (strBytes.size() < JOURNAL_MARKS_SIZE || !BeginsWith(strRest, MARKS_MAGIC))
        return false;
    const auto nGeneration = TakeNumber<std::uint64_t>(strRest);
    JournalMarks oMarks;
    oMarks.m_nDone = TakeNumber<std::uint64_t>(strRest);
    oMarks.m_nReserved = TakeNumber<std::uint64_t>(strRest);
    oMarks.m_nBoot = TakeNumber<std::uint32_t>(strRest);
    const std::string_view strChecked = strBytes.substr(0, strBytes.size() - strRest.size());
    if (TakeNumber<std::uint32_t>(strRest) != Crc32(strChecked))
        return false;
    rnGeneration = nGeneration;
    rMarks = oMarks;
    return true;
}
