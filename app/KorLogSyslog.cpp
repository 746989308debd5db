#include "app/KorLogSinkDetail.h"
#include "app/KorOpenDetail.h"
#include "fs/KorDescriptorDetail.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

namespace
{

/// A socket that is connected to the system's log and never waits; none with errno.
CKorDescriptor ConnectToSyslog()
{
    constexpr char PATH[] = "/dev/log";
    sockaddr_un oAddress = {};
    oAddress.sun_family = AF_UNIX;
    std::memcpy(oAddress.sun_path, PATH, sizeof PATH);
    CKorDescriptor oSocket(
        KorMoveAboveStandard(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)));
    const bool bConnected =
        oSocket.IsOpen() &&
        connect(oSocket.Get(), reinterpret_cast<const sockaddr*>(&oAddress), sizeof oAddress) == 0;
    return bConnected ? std::move(oSocket) : CKorDescriptor();
}

class CSyslog : public CKorLogSink
{
public:
    CSyslog(std::string strName, CKorDescriptor oSocket)
        : m_strName(std::move(strName)), m_oSocket(std::move(oSocket))
    {
    }

    void Begin(CKorLogLine& oLine, int nLevel) const override
    {
        constexpr int FACILITY_DAEMON = 3;
        char szText[32];
        std::snprintf(szText, sizeof szText, "<%d>", FACILITY_DAEMON * 8 + nLevel);
        oLine.Add(szText);
        oLine.AddSyslogTime();
        oLine.AddMessage(m_strName.data(), m_strName.size());
        std::snprintf(szText, sizeof szText, "[%d]: ", static_cast<int>(getpid()));
        oLine.Add(szText);
    }

    bool Write(const CKorLogLine& oLine) override
    {
        // A system's log that was started anew is another one.
        return Send(oLine) || (errno != EAGAIN && Reopen() && Send(oLine));
    }

    bool Reopen() override
    {
        CKorDescriptor oSocket = ConnectToSyslog();
        if (!oSocket.IsOpen())
            return false;
        m_oSocket = std::move(oSocket);
        return true;
    }

private:
    /// A datagram is a line: it needs no line feed.
    bool Send(const CKorLogLine& oLine) const
    {
        return send(m_oSocket.Get(), oLine.Bytes(), oLine.Length() - 1, MSG_NOSIGNAL) != -1;
    }

    std::string m_strName;
    CKorDescriptor m_oSocket;
};

} // namespace

std::unique_ptr<CKorLogSink> KorLogToSyslog(const char* pszName)
{
    constexpr std::size_t LONGEST_NAME = 255;
    CKorDescriptor oSocket = ConnectToSyslog();
    if (!oSocket.IsOpen())
        return nullptr;
    const bool bNamed = pszName != nullptr && *pszName != '\0';
    const std::string strName = bNamed ? pszName : program_invocation_short_name;
    return std::make_unique<CSyslog>(strName.substr(0, LONGEST_NAME), std::move(oSocket));
}
