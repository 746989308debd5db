#pragma once

/// @file
/// The registers of a meter, and how they are read with few requests.

#include "examples/gateway/Reading.h"
#include "examples/gateway/Register.h"

#include <string>
#include <vector>

/// The registers of a meter in the order in which its readings hold them.
using RegisterMap = std::vector<Register>;

/// A map that is known by a name: "simulated", "float" or "integer".
/// @return null for every other name
const RegisterMap* FindReadyMap(const std::string& strName);

/// Their names, for people: "simulated, float, integer".
std::string ReadyMapNames();

/// The requests that read a map. Registers that stand side by side are read together, at most 125
/// words at a time; what stands between registers is never read, since a meter may refuse it, and
/// no value is split.
class RegisterPlan
{
public:
    /// Words that one request reads.
    struct Block
    {
        bool m_bInput;
        std::uint16_t m_nFirst;
        std::uint16_t m_nCount;
    };

    explicit RegisterPlan(RegisterMap vecRegisters);

    const std::vector<Block>& Blocks() const { return m_vecBlocks; }

    /// The values in the order of the map.
    /// @param vecAnswers  the words of each block
    std::vector<ReadingValue>
    Values(const std::vector<std::vector<std::uint16_t>>& vecAnswers) const;

private:
    /// Where the words of a register come.
    struct Place
    {
        std::size_t m_nBlock;
        std::size_t m_nWord;
    };

    void Put(std::size_t nRegister);

    RegisterMap m_vecRegisters;
    std::vector<Block> m_vecBlocks;
    std::vector<Place> m_vecPlaces; // beside the registers
};
