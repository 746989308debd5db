#include "fs/KorFileAttributesDetail.h"

#include "text/KorStringDetail.h"

#include <cerrno>
#include <string>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr mode_t PERMISSIONS = 07777;

using Names = std::vector<std::string>;

/// The names of all extended attributes. A file system that knows none has none.
bool ListAttributes(int hFile, Names& rvecNames)
{
    const ssize_t nSize = flistxattr(hFile, nullptr, 0);
    if (nSize == -1)
        return errno == ENOTSUP;
    std::string strNames;
    strNames.resize(static_cast<size_t>(nSize));
    if (nSize != 0 && flistxattr(hFile, strNames.data(), strNames.size()) != nSize)
        return false;
    for (size_t nName = 0; nName < strNames.size(); nName += rvecNames.back().size() + 1)
        KorAdd(rvecNames, &strNames[nName]);
    return true;
}

bool ReadAttribute(int hFile, const char* pszName, std::string& rstrValue)
{
    const ssize_t nSize = fgetxattr(hFile, pszName, nullptr, 0);
    if (nSize == -1)
        return false;
    rstrValue.resize(static_cast<size_t>(nSize));
    return nSize == 0 || fgetxattr(hFile, pszName, rstrValue.data(), rstrValue.size()) == nSize;
}

/// Attributes that the system itself gives to a new file may be right already, and beyond the
/// rights of this process to set.
bool CopyAttribute(int hFrom, int hTo, const char* pszName)
{
    std::string strFrom;
    std::string strTo;
    if (!ReadAttribute(hFrom, pszName, strFrom))
        return false;
    return (ReadAttribute(hTo, pszName, strTo) && strTo == strFrom) ||
           fsetxattr(hTo, pszName, strFrom.data(), strFrom.size(), 0) == 0;
}

bool Contains(const Names& vecNames, const std::string& strName)
{
    for (const std::string& strOne : vecNames) {
        if (strOne == strName)
            return true;
    }
    return false;
}

/// Removes what the new file has of its directory and the old file has not, a default access
/// control list for one.
bool RemoveOthers(int hTo, const Names& vecKept)
{
    Names vecNames;
    if (!ListAttributes(hTo, vecNames))
        return false;
    for (const std::string& strName : vecNames) {
        if (!Contains(vecKept, strName) && fremovexattr(hTo, strName.c_str()) != 0)
            return false;
    }
    return true;
}

bool CopyExtendedAttributes(int hFrom, int hTo)
{
    Names vecNames;
    if (!ListAttributes(hFrom, vecNames) || !RemoveOthers(hTo, vecNames))
        return false;
    for (const std::string& strName : vecNames) {
        if (!CopyAttribute(hFrom, hTo, strName.c_str()))
            return false;
    }
    return true;
}

/// A bit of the mode that the process may not set is dropped by the system without a failure.
bool HasMode(int hFile, mode_t nMode)
{
    struct stat oStat;
    if (fstat(hFile, &oStat) != 0)
        return false;
    if ((oStat.st_mode & PERMISSIONS) != nMode)
        errno = EPERM;
    return (oStat.st_mode & PERMISSIONS) == nMode;
}

} // namespace

bool KorCopyFileAttributes(int hFrom, int hTo)
{
    struct stat oFrom;
    if (fstat(hFrom, &oFrom) != 0)
        return false;
    const mode_t nMode = oFrom.st_mode & PERMISSIONS;
    return fchown(hTo, oFrom.st_uid, oFrom.st_gid) == 0 && CopyExtendedAttributes(hFrom, hTo) &&
           fchmod(hTo, nMode) == 0 && HasMode(hTo, nMode);
}
