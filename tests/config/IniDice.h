#pragma once

#include "tests/support/Seed.h"

#include <random>
#include <string>
#include <vector>

/// Random texts in which names meet often and every special character occurs.
class IniDice
{
public:
    explicit IniDice(unsigned nSeed) : m_oEngine(nSeed) {}

    size_t Below(size_t nLimit) { return m_oEngine() % nLimit; }
    std::string OneOf(const std::vector<std::string>& vecTexts)
    {
        return vecTexts[Below(vecTexts.size())];
    }

    std::string Name() { return OneOf({"a", "A", "b", "B", "c", "key word", "\xC4", "\xE4", ""}); }
    std::string Value() { return OneOf({"", "1", "two words", "\"q\"", "x=y", "#", "[z]", " 5 "}); }

    std::string Line()
    {
        switch (Below(8)) {
        case 0:
        case 1:
            return Space() + "[" + Name() + OneOf({"]", "]", "]", "", " ]", "]junk"}) + Tail();
        case 2:
        case 3:
        case 4:
            return Space() + Name() + Space() + "=" + Space() + Value() + Tail();
        case 5:
            return Space() + "## COMMENTED ## " + Name() + "=" + Value();
        case 6:
            return Space();
        default:
            return Noise();
        }
    }

    std::string File()
    {
        std::string strFile;
        for (size_t n = Below(20); n > 0; --n)
            strFile += Line() + "\n";
        return strFile + (Below(2) == 0 ? Line() : "");
    }

private:
    std::string Space() { return OneOf({"", "", "", " ", "\t", " \v\f"}); }
    std::string Tail() { return OneOf({"", "", "", " ", "\r", "#c", " # c \r", " ;c"}); }

    std::string Noise()
    {
        std::string strNoise;
        for (size_t n = Below(8); n > 0; --n)
            strNoise += OneOf({"a", "[", "]", "=", "#", " ", "\t", "\"", ";", std::string(1, '\0'),
                               "\xFF", "\r"});
        return strNoise;
    }

    std::mt19937 m_oEngine;
};
