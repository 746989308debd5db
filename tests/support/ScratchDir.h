#pragma once

#include <string>

/// A directory of its own, removed with everything in it at the end of the scope.
class ScratchDir
{
public:
    /// Makes it under the system's temporary directory.
    ScratchDir();
    explicit ScratchDir(const std::string& strParent);
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    /// The directory, without a trailing separator.
    const std::string& Path() const { return m_strPath; }
    /// The full name of @p strName in the directory.
    std::string File(const std::string& strName) const { return m_strPath + "/" + strName; }

private:
    std::string m_strPath;
};

/// The bytes of a file; fails the running test when it cannot be read.
std::string ReadFile(const std::string& strPath);
/// Replaces the file's content; fails the running test when it cannot be written.
void WriteFile(const std::string& strPath, const std::string& strContent);
