#include "bench/LibserialportLine.h"

#include <cstdarg>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

// A pseudo-terminal has no modem lines: here it answers as if all of them were off.
extern "C" int ioctl(int hFile, unsigned long nRequest, ...) noexcept
{
    va_list args;
    va_start(args, nRequest);
    void* const pArgument = va_arg(args, void*);
    va_end(args);
    if (nRequest == TIOCMGET) {
        *static_cast<int*>(pArgument) = 0;
        return 0;
    }
    if (nRequest == TIOCMSET || nRequest == TIOCMBIS || nRequest == TIOCMBIC)
        return 0;
    return static_cast<int>(syscall(SYS_ioctl, hFile, nRequest, pArgument));
}

LibserialportLine::LibserialportLine(const std::string& strTerminal)
    : m_strLink("/tmp/tarvo-bench-line-" + std::to_string(getpid()))
{
    // Behind "/dev/" the name has to lead to something from the kernel's list of devices as well.
    const std::string strName = "/dev/../../.." + m_strLink;
    unlink(m_strLink.c_str());
    if (symlink(strTerminal.c_str(), m_strLink.c_str()) == 0 &&
        sp_get_port_by_name(strName.c_str(), &m_pPort) == SP_OK &&
        sp_open(m_pPort, SP_MODE_READ_WRITE) != SP_OK) {
        sp_free_port(m_pPort);
        m_pPort = nullptr;
    }
}

LibserialportLine::~LibserialportLine()
{
    if (m_pPort != nullptr) {
        sp_close(m_pPort);
        sp_free_port(m_pPort);
    }
    unlink(m_strLink.c_str());
}
