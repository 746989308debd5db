#pragma once

#include <string>
#include <vector>

/// Arguments in the form in which main() receives them.
class CmdLineArguments
{
public:
    CmdLineArguments(std::initializer_list<const char*> lstArgs)
        : m_vecArgs(lstArgs.begin(), lstArgs.end())
    {
        for (std::string& strArg : m_vecArgs)
            m_vecPointers.push_back(strArg.data());
        m_vecPointers.push_back(nullptr);
    }

    int Count() const { return static_cast<int>(m_vecArgs.size()); }
    char** Pointers() { return m_vecPointers.data(); }

private:
    std::vector<std::string> m_vecArgs;
    std::vector<char*> m_vecPointers;
};
