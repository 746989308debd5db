#include "MqttClient.h"

#include "fs/KorWholeFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace
{

constexpr char OFFLINE[] = "offline";

/// Empty names are none to libmosquitto.
const char* OrNull(const std::string& strText)
{
    return strText.empty() ? nullptr : strText.c_str();
}

/// The first line of a file.
bool ReadPassword(const std::string& strFile, std::string& rstrPassword, std::string& rstrError)
{
    if (strFile.empty())
        return true;
    if (!KorReadFile(strFile.c_str(), rstrPassword)) {
        rstrError = "password file " + strFile + ": " + std::strerror(errno);
        return false;
    }
    rstrPassword.resize(std::min(rstrPassword.find_first_of("\r\n"), rstrPassword.size()));
    return true;
}

bool SetCredentials(mosquitto* pClient, const MqttSettings& oSettings, std::string& rstrError)
{
    if (oSettings.m_strUser.empty())
        return true;
    std::string strPassword;
    if (!ReadPassword(oSettings.m_strPasswordFile, strPassword, rstrError))
        return false;
    const int nResult =
        mosquitto_username_pw_set(pClient, oSettings.m_strUser.c_str(), OrNull(strPassword));
    if (nResult != MOSQ_ERR_SUCCESS)
        rstrError = "user or password: " + MqttErrorText(nResult, errno);
    return nResult == MOSQ_ERR_SUCCESS;
}

bool SetCertificates(mosquitto* pClient, const MqttSettings& oSettings, std::string& rstrError)
{
    if (oSettings.m_strCaFile.empty())
        return true;
    const int nResult =
        mosquitto_tls_set(pClient, oSettings.m_strCaFile.c_str(), nullptr,
                          OrNull(oSettings.m_strCertFile), OrNull(oSettings.m_strKeyFile), nullptr);
    if (nResult != MOSQ_ERR_SUCCESS)
        rstrError = "certificates: a file among " + oSettings.m_strCaFile + ", " +
                    oSettings.m_strCertFile + ", " + oSettings.m_strKeyFile + " cannot be read";
    return nResult == MOSQ_ERR_SUCCESS;
}

bool SetWill(mosquitto* pClient, const MqttSettings& oSettings, std::string& rstrError)
{
    const int nResult = mosquitto_will_set(pClient, MqttStatusTopic(oSettings).c_str(),
                                           sizeof OFFLINE - 1, OFFLINE, 1, true);
    if (nResult != MOSQ_ERR_SUCCESS)
        rstrError = "topic prefix " + oSettings.m_strPrefix + ": " + MqttErrorText(nResult, errno);
    return nResult == MOSQ_ERR_SUCCESS;
}

} // namespace

MqttClient MakeMqttClient(const MqttSettings& oSettings, void* pUser, std::string& rstrError)
{
    static const int INITIALIZED = mosquitto_lib_init();
    static_cast<void>(INITIALIZED);
    MqttClient pClient(mosquitto_new(oSettings.m_strClientId.c_str(), true, pUser));
    if (pClient == nullptr)
        rstrError = "client id " + oSettings.m_strClientId + ": " + std::strerror(errno);
    else if (!SetWill(pClient.get(), oSettings, rstrError) ||
             !SetCredentials(pClient.get(), oSettings, rstrError) ||
             !SetCertificates(pClient.get(), oSettings, rstrError))
        pClient.reset();
    else // a reading is small and wanted at once
        mosquitto_int_option(pClient.get(), MOSQ_OPT_TCP_NODELAY, 1);
    return pClient;
}

std::string MqttErrorText(int nResult, int nError)
{
    return nResult == MOSQ_ERR_ERRNO ? std::strerror(nError) : mosquitto_strerror(nResult);
}

std::string MqttStatusTopic(const MqttSettings& oSettings)
{
    return oSettings.m_strPrefix + "/status";
}
