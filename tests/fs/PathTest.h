#pragma once

#include "fs/KorPathFunc.h"

#include <gtest/gtest.h>
#include <random>
#include <stdexcept>

template <typename TCall>
void ExpectNullFailure(TCall fnCall)
{
    try {
        fnCall();
        ADD_FAILURE() << "a null path does not fail";
    } catch (const std::logic_error& oFailure) {
        EXPECT_STREQ("basic_string::_S_construct NULL not valid", oFailure.what());
    }
}

/// A text of the characters that matter to paths.
inline std::string RandomPath(std::mt19937& oRandom)
{
    constexpr char ALPHABET[] = "././\\\\ab";
    std::string strPath(oRandom() % 12, ' ');
    for (char& c : strPath)
        c = ALPHABET[oRandom() % (sizeof ALPHABET - 1)];
    return strPath;
}
