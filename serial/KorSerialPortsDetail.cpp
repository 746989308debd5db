#include "serial/KorSerialPortsDetail.h"

#include "text/KorStringDetail.h"

#include <algorithm>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <list>
#include <memory>
#include <stdlib.h>
#include <unistd.h>
#include <utility>

namespace
{

std::string DeviceOf(const std::string& strEntry)
{
    std::string strDevice = KorConcat({"/dev/", strEntry});
    std::replace(strDevice.begin(), strDevice.end(), '!', '/');
    return strDevice;
}

/// The names in a folder, in the order of the devices.
std::list<std::string> EntriesOf(const std::string& strFolder)
{
    std::list<std::string> lstNames;
    DIR* const pFolder = opendir(strFolder.c_str());
    if (pFolder == nullptr)
        return lstNames;
    while (const dirent* const pEntry = readdir(pFolder)) {
        if (pEntry->d_name[0] == '.')
            continue;
        const std::string strDevice = DeviceOf(pEntry->d_name);
        auto itPlace = lstNames.begin();
        while (itPlace != lstNames.end() && KorIsNameBefore(DeviceOf(*itPlace), strDevice))
            ++itPlace;
        lstNames.insert(itPlace, pEntry->d_name);
    }
    closedir(pFolder);
    return lstNames;
}

/// A name below a folder with all links followed; empty when it is not there.
std::string RealName(const std::string& strFolder, std::string_view strName)
{
    char acName[PATH_MAX];
    return realpath(KorConcat({strFolder, strName}).c_str(), acName) != nullptr ? acName : "";
}

std::string_view LastPart(std::string_view strName)
{
    return strName.substr(strName.rfind('/') + 1);
}

/// Leaves the name of the folder.
void GoUp(std::string& rstrName)
{
    rstrName.resize(std::min(rstrName.rfind('/'), rstrName.size()));
}

/// The first line of a file in a folder; empty when it cannot be read.
std::string LineOf(const std::string& strFolder, std::string_view strName)
{
    const int hFile = open(KorConcat({strFolder, strName}).c_str(), O_RDONLY | O_CLOEXEC);
    if (hFile == -1)
        return "";
    char acText[256];
    const ssize_t nRead = read(hFile, acText, sizeof acText);
    close(hFile);
    const std::string_view strText(acText, nRead > 0 ? static_cast<std::size_t>(nRead) : 0);
    return std::string(strText.substr(0, strText.find('\n')));
}

/// The device itself: newer kernels show UARTs below two devices of their serial core.
std::string SkipSerialCore(std::string strDevice)
{
    while (LastPart(RealName(strDevice, "/subsystem")) == "serial-base")
        GoUp(strDevice);
    return strDevice;
}

/// Fills in what the USB device says that a port belongs to, if it belongs to one.
void DescribeUsb(std::string strDevice, const std::string& strEnd, SKorSerialPort& rPort)
{
    while (strDevice.size() > strEnd.size() &&
           access(KorConcat({strDevice, "/idVendor"}).c_str(), F_OK) != 0)
        GoUp(strDevice);
    if (strDevice.size() <= strEnd.size())
        return;
    rPort.m_strVendor = LineOf(strDevice, "/manufacturer");
    rPort.m_strProduct = LineOf(strDevice, "/product");
    rPort.m_strSerialNumber = LineOf(strDevice, "/serial");
}

std::string StableName(const std::string& strRoot, const std::string& strDevice)
{
    const std::string strTarget = RealName(strRoot, strDevice);
    for (const char* pszFolder : {"/dev/serial/by-id", "/dev/serial/by-path"}) {
        std::string strFirst;
        for (const std::string& strName : EntriesOf(KorConcat({strRoot, pszFolder}))) {
            const std::string strLink = KorConcat({pszFolder, "/", strName});
            if (RealName(strRoot, strLink) == strTarget &&
                (strFirst.empty() || std::string_view(strLink) < strFirst))
                strFirst = strLink;
        }
        if (!strFirst.empty() && !strTarget.empty())
            return strFirst;
    }
    return "";
}

SKorSerialPort Describe(const std::string& strRoot, const std::string& strName,
                        const std::string& strShown)
{
    SKorSerialPort oPort;
    oPort.m_strDevice = DeviceOf(strName);
    const std::string strDevice = SkipSerialCore(strShown);
    oPort.m_strDriver = LastPart(RealName(strDevice, "/driver"));
    DescribeUsb(strDevice, RealName(strRoot, "/sys"), oPort);
    oPort.m_strStableName = StableName(strRoot, oPort.m_strDevice);
    return oPort;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Takes the number that a text begins with, without its leading zeros.
std::string_view TakeNumber(std::string_view& rstrText)
{
    std::size_t nDigits = 0;
    std::size_t nZeros = 0;
    for (; nDigits < rstrText.size() && IsDigit(rstrText[nDigits]); ++nDigits)
        nZeros += nZeros == nDigits && rstrText[nDigits] == '0' ? 1 : 0;
    const std::string_view strNumber = rstrText.substr(nZeros, nDigits - nZeros);
    rstrText.remove_prefix(nDigits);
    return strNumber;
}

} // namespace

bool KorIsNameBefore(std::string_view strLeft, std::string_view strRight)
{
    while (!strLeft.empty() && !strRight.empty()) {
        if (IsDigit(strLeft.front()) && IsDigit(strRight.front())) {
            const std::string_view strOne = TakeNumber(strLeft);
            const std::string_view strOther = TakeNumber(strRight);
            if (strOne != strOther)
                return strOne.size() != strOther.size() ? strOne.size() < strOther.size()
                                                        : strOne < strOther;
        } else if (strLeft.front() != strRight.front()) {
            return strLeft.front() < strRight.front();
        } else {
            strLeft.remove_prefix(1);
            strRight.remove_prefix(1);
        }
    }
    return strLeft.size() < strRight.size();
}

void KorListSerialPortsBelow(const std::string& strRoot, std::vector<SKorSerialPort>& rvecPorts)
{
    rvecPorts.clear();
    const std::string strClass = KorConcat({strRoot, "/sys/class/tty/"});
    for (const std::string& strName : EntriesOf(strClass)) {
        const std::string strEntry = KorConcat({strClass, strName});
        const std::string strShown = RealName(strEntry, "/device");
        // Consoles have no device; slots that a driver keeps for UARTs that are not there have
        // the type 0.
        if (!strShown.empty() && LineOf(strEntry, "/type") != std::string_view("0"))
            rvecPorts.push_back(Describe(strRoot, strName, strShown));
    }
}
