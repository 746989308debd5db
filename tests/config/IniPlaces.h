#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// A table of the size and filling that the index has, which counts the steps of its users.
class Places
{
public:
    explicit Places(size_t nNames)
    {
        size_t nSize = 16;
        while (nSize / 2 < nNames)
            nSize *= 2;
        m_vecTaken.resize(nSize);
    }

    /// Takes the first free place. @return how many steps away it is
    size_t Take(uint32_t nHash)
    {
        size_t nStep = 0;
        while (m_vecTaken[(nHash + nStep) & (m_vecTaken.size() - 1)])
            ++nStep;
        m_vecTaken[(nHash + nStep) & (m_vecTaken.size() - 1)] = true;
        return nStep;
    }

private:
    std::vector<bool> m_vecTaken;
};
