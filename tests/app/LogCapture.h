#pragma once

#include <string>
#include <vector>

/// Puts a descriptor in the place of standard error until the end of the scope.
class StandardErrorTo
{
public:
    explicit StandardErrorTo(int nHandle);
    ~StandardErrorTo();
    StandardErrorTo(const StandardErrorTo&) = delete;
    StandardErrorTo& operator=(const StandardErrorTo&) = delete;

private:
    int m_nFormer;
};

/// Standard error in a file until the end of the scope.
class CapturedLog
{
public:
    CapturedLog();
    ~CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// Descriptor of the file.
    int Handle() const { return m_nFile; }
    /// What was written since the last call.
    std::string Take();
    /// The same without the time before each line; fails the running test when one has none.
    std::string TakeMessages();

private:
    int m_nFile;
    StandardErrorTo m_oStandardError;
};

/// The lines of a text without their line feeds; fails the running test when the last has none.
std::vector<std::string> Lines(const std::string& strText);

/// A line without its time; fails the running test when it has none.
std::string WithoutTime(const std::string& strLine);
