#include "examples/gateway/SettingsExchange.h"

#include "config/KorTypedOptions.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr std::size_t LONGEST_PREFIX = 100;

void CheckReadable(CKorIniOptionExchange* pExchange, const char* pszOption,
                   const std::string& strFile)
{
    if (!strFile.empty() && access(strFile.c_str(), R_OK) != 0)
        Complain(pExchange, "Mqtt", pszOption,
                 std::string("cannot be read: ") + std::strerror(errno));
}

bool IsGoodPrefix(const std::string& strPrefix)
{
    return !strPrefix.empty() && strPrefix.size() <= LONGEST_PREFIX &&
           strPrefix.find_first_of("+#") == std::string::npos && strPrefix.front() != '/' &&
           strPrefix.front() != '$' && strPrefix.back() != '/';
}

void CheckMqtt(CKorIniOptionExchange* pExchange, const MqttSettings& oMqtt)
{
    CheckReadable(pExchange, "PasswordFile", oMqtt.m_strPasswordFile);
    CheckReadable(pExchange, "CaFile", oMqtt.m_strCaFile);
    CheckReadable(pExchange, "CertFile", oMqtt.m_strCertFile);
    CheckReadable(pExchange, "KeyFile", oMqtt.m_strKeyFile);
    if (!IsGoodPrefix(oMqtt.m_strPrefix))
        Complain(pExchange, "Mqtt", "Prefix",
                 "is no beginning of a topic: 1 to 100 bytes without '+', and '/' only between "
                 "others");
    if (oMqtt.m_strUser.empty() && !oMqtt.m_strPasswordFile.empty())
        Complain(pExchange, "Mqtt", "PasswordFile", "needs a User");
    if (oMqtt.m_strCertFile.empty() != oMqtt.m_strKeyFile.empty())
        Complain(pExchange, "Mqtt", oMqtt.m_strKeyFile.empty() ? "CertFile" : "KeyFile",
                 "needs the other one of CertFile and KeyFile");
    if (oMqtt.m_strCaFile.empty() && !oMqtt.m_strCertFile.empty())
        Complain(pExchange, "Mqtt", "CertFile", "needs a CaFile");
    std::vector<std::string> vecOptions;
    pExchange->GetOptions("Mqtt", vecOptions);
    if (oMqtt.m_strHost.empty() && !vecOptions.empty())
        Complain(pExchange, "Mqtt", "", "has no Host");
}

void CheckStore(CKorIniOptionExchange* pExchange, const std::string& strFile)
{
    const std::size_t nSlash = strFile.rfind('/');
    const std::string strDirectory =
        nSlash == std::string::npos ? "." : strFile.substr(0, nSlash + 1);
    struct stat oStatus;
    if (strFile.empty())
        return;
    if (stat(strDirectory.c_str(), &oStatus) != 0 || !S_ISDIR(oStatus.st_mode))
        Complain(pExchange, "Store", "File", "is in a directory that is not there");
    else if (stat(strFile.c_str(), &oStatus) == 0 && !S_ISREG(oStatus.st_mode))
        Complain(pExchange, "Store", "File", "is no regular file");
}

} // namespace

void ExchangeMqtt(CKorIniOptionExchange* pExchange, MqttSettings& roMqtt)
{
    const MqttSettings oDefault;
    IOX_Value(pExchange, "Mqtt", "Host", roMqtt.m_strHost, oDefault.m_strHost);
    IOX_Range(pExchange, "Mqtt", "Port", roMqtt.m_nPort, oDefault.m_nPort, 1, 65535);
    IOX_Value(pExchange, "Mqtt", "User", roMqtt.m_strUser, oDefault.m_strUser);
    IOX_Value(pExchange, "Mqtt", "PasswordFile", roMqtt.m_strPasswordFile,
              oDefault.m_strPasswordFile);
    IOX_Value(pExchange, "Mqtt", "CaFile", roMqtt.m_strCaFile, oDefault.m_strCaFile);
    IOX_Value(pExchange, "Mqtt", "CertFile", roMqtt.m_strCertFile, oDefault.m_strCertFile);
    IOX_Value(pExchange, "Mqtt", "KeyFile", roMqtt.m_strKeyFile, oDefault.m_strKeyFile);
    IOX_Value(pExchange, "Mqtt", "Prefix", roMqtt.m_strPrefix, oDefault.m_strPrefix);
    IOX_Range(pExchange, "Mqtt", "Qos", roMqtt.m_nQos, oDefault.m_nQos, 0, 2);
    CheckMqtt(pExchange, roMqtt);
}

void ExchangeStore(CKorIniOptionExchange* pExchange, StoreSettings& roStore)
{
    const StoreSettings oDefault;
    IOX_Value(pExchange, "Store", "File", roStore.m_strFile, oDefault.m_strFile);
    IOX_Range(pExchange, "Store", "MaxSize", roStore.m_nMaxSize, oDefault.m_nMaxSize, 65536,
              1073741824);
    IOX_Range(pExchange, "Store", "WriteInterval", roStore.m_nWriteInterval,
              oDefault.m_nWriteInterval, 0, 86400);
    CheckStore(pExchange, roStore.m_strFile);
}
