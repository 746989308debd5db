#pragma once

#include <string>
#include <vector>

/// An argument vector as `main` receives it: writable texts and a null entry at the end.
class Arguments
{
public:
    Arguments(std::initializer_list<const char*> oTexts) : m_vecTexts(oTexts.begin(), oTexts.end())
    {
        for (std::string& strText : m_vecTexts)
            m_vecPointers.push_back(strText.data());
        m_vecPointers.push_back(nullptr);
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    int Count() const { return static_cast<int>(m_vecTexts.size()); }
    char** Vector() { return m_vecPointers.data(); }

private:
    std::vector<std::string> m_vecTexts;
    std::vector<char*> m_vecPointers;
};
