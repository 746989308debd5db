#include "fs/KorWholeFile.h"

#include "fs/KorLockedFileDetail.h"

bool KorReadFile(const char* pszName, std::string& rstrContent)
{
    SKorFileImage oImage;
    if (!oImage.Read(pszName != nullptr ? pszName : ""))
        return false;
    rstrContent = std::move(oImage.m_strContent);
    return true;
}

bool KorReplaceFile(const char* pszName, const std::string& strContent)
{
    CKorLockedFile oFile(pszName);
    return oFile.Lock() && oFile.Replace(strContent);
}
