#pragma once

#include <cstddef>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <vector>

/// What every fuzzer has: it takes one input and ends the program when a promise is broken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);

/// The input as numbers (from its end) and texts (from its start).
using Input = FuzzedDataProvider;

/// A text as a C++ literal.
std::string Shown(const std::string& strText);
inline std::string Shown(bool bValue)
{
    return bValue ? "true" : "false";
}
template <typename Number>
std::string Shown(Number nNumber)
{
    return std::to_string(nNumber);
}
template <typename Item>
std::string Shown(const std::vector<Item>& vecItems)
{
    std::string strItems = "{";
    for (const Item& oItem : vecItems)
        strItems += Shown(oItem) + ", ";
    return strItems + "}";
}

/// Prints what was promised and ends the program, which is what the fuzzer takes for a find.
[[noreturn]] void Find(const char* pszPromise, const std::string& strDetail);

/// Demands that a promise is kept.
inline void Expect(bool bKept, const char* pszPromise)
{
    if (!bKept)
        Find(pszPromise, "");
}

/// Demands that a promise is kept, and shows a value with it when it is not.
template <typename Value>
void Expect(bool bKept, const char* pszPromise, const Value& value)
{
    if (!bKept)
        Find(pszPromise, Shown(value));
}

/// Demands equal values.
template <typename Value>
void ExpectEqual(const Value& expected, const Value& actual, const char* pszPromise)
{
    if (!(expected == actual))
        Find(pszPromise, "expected " + Shown(expected) + "\n  actual " + Shown(actual));
}

/// The file that the parser reads: in memory, under a name that can be opened again.
class MemoryFile
{
public:
    MemoryFile();
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const std::string& Name() const { return m_strName; }
    void Write(const std::string& strContent) const;
    std::string Read() const;

private:
    int m_nHandle;
    std::string m_strName;
};

/// A file in a directory of its own, for what puts another file in its place.
class DirectoryFile
{
public:
    DirectoryFile();
    ~DirectoryFile();
    DirectoryFile(const DirectoryFile&) = delete;
    DirectoryFile& operator=(const DirectoryFile&) = delete;

    const std::string& Name() const { return m_strName; }
    void Write(const std::string& strContent) const;
    std::string Read() const;

private:
    std::string m_strDirectory;
    std::string m_strName;
};
