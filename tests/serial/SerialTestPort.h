#pragma once

#include "KorAtomicDetail.h"
#include "serial/KorSerial.h"
#include "tests/support/Emulation.h"
#include "tests/support/PseudoTerminal.h"

#include <unistd.h>

/// A port that shows its members, opened with one word.
class TestPort : public CKorSerial
{
public:
    ~TestPort() override
    {
        while (close() == SERIAL_THREAD_RUNNING) {
        }
    }

    using CKorSerial::m_hPort;
    using CKorSerial::m_oRcvBuffer;
    using CKorSerial::m_oRcvThread;
    using CKorSerial::m_oTermios;

    using CKorSerial::open;
    int open(const char* pszDevice)
    {
        return open(pszDevice, BAUD_115200, PARITY_NONE, STOPBITS_1, BYTESIZE_8, nullptr);
    }
    int open(const PseudoTerminal& oLine) { return open(oLine.Name()); }

    /// Forgets the open descriptor and returns it, as a failed open() does.
    int ReleaseDescriptor()
    {
        const int hPort = m_hPort;
        AdoptDescriptor(-1);
        return hPort;
    }
    /// Works on this descriptor from now on, also while the receive thread looks.
    void AdoptDescriptor(int hPort) { KorAtomicStore(m_hPort, hPort); }
};

/// Whether every step costs many times more here, so that stress tests do with less.
inline bool OnSlowGround()
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    return true;
#else
    return UnderEmulation();
#endif
}
