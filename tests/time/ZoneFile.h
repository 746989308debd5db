#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The content of a zone file, good until a test damages a part of it.
struct ZoneFile
{
    struct Type
    {
        std::int32_t nOffset;
        std::uint8_t nSummerTime;
        std::uint8_t nAbbreviation;
    };

    char cVersion = '2';
    std::vector<std::pair<std::int64_t, std::uint8_t>> vecChanges = {{-1000, 1}, {1000, 0}};
    std::vector<Type> vecTypes = {{3600, 0, 0}, {7200, 1, 4}};
    std::string strNames{"STD\0DST\0", 8};
    std::string strLeapSeconds; ///< 12 bytes each
    std::string strStandardFlags;
    std::string strUtFlags;
    std::string strFooter = "\nSTD-1\n";

    static std::string Number(std::int64_t nNumber, unsigned nSize)
    {
        std::string strBytes;
        for (unsigned i = nSize; i-- > 0;)
            strBytes += static_cast<char>(static_cast<std::uint64_t>(nNumber) >> (8 * i));
        return strBytes;
    }

    static std::string Header(char cVersion, const std::vector<std::size_t>& vecCounts)
    {
        std::string strHeader = "TZif" + std::string(1, cVersion) + std::string(15, '\0');
        for (const std::size_t nCount : vecCounts)
            strHeader += Number(static_cast<std::int64_t>(nCount), 4);
        return strHeader;
    }

    std::string Block(unsigned nTimeSize) const
    {
        std::string strBlock = Header(cVersion, {strUtFlags.size(), strStandardFlags.size(),
                                                 strLeapSeconds.size() / 12, vecChanges.size(),
                                                 vecTypes.size(), strNames.size()});
        for (const auto& oChange : vecChanges)
            strBlock += Number(oChange.first, nTimeSize);
        for (const auto& oChange : vecChanges)
            strBlock += static_cast<char>(oChange.second);
        for (const Type& oType : vecTypes) {
            strBlock += Number(oType.nOffset, 4);
            strBlock += static_cast<char>(oType.nSummerTime);
            strBlock += static_cast<char>(oType.nAbbreviation);
        }
        return strBlock + strNames + strLeapSeconds + strStandardFlags + strUtFlags;
    }

    std::string Content() const
    {
        if (cVersion == '\0')
            return Block(4);
        // The block for readers of version 1, as small as it may be.
        const std::string strFirst =
            Header(cVersion, {0, 0, 0, 0, 1, 1}) + std::string(6, '\0') + std::string(1, '\0');
        return strFirst + Block(8) + strFooter;
    }
};
