#pragma once

/// @file
/// One way each to read and write lines: a loop written by hand, our class, libserialport, Asio
/// and Qt.

#include "bench/FarEnd.h"
#include "bench/LibserialportLine.h"
#include "serial/KorSerialLine.h"

#include <QSerialPort>
#include <asio/io_context.hpp>
#include <asio/read_until.hpp>
#include <asio/serial_port.hpp>
#include <asio/streambuf.hpp>
#include <asio/write.hpp>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <unistd.h>

/// What one writes by hand: poll() with a time-out, read() into a block, memchr().
class HandWritten
{
public:
    explicit HandWritten(const std::string& strName)
        : m_hLine(open(strName.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~HandWritten() { close(m_hLine); }
    HandWritten(const HandWritten&) = delete;
    HandWritten& operator=(const HandWritten&) = delete;

    bool ReadLine(std::string& strLine)
    {
        for (;;) {
            const void* const pFound = memchr(m_acBlock + m_nBegin, '\n', m_nEnd - m_nBegin);
            if (pFound != nullptr) {
                const char* const pBegin = m_acBlock + m_nBegin;
                const std::size_t nLength =
                    static_cast<std::size_t>(static_cast<const char*>(pFound) - pBegin) + 1;
                strLine.assign(pBegin, nLength);
                m_nBegin += nLength;
                return true;
            }
            if (!Fill())
                return false;
        }
    }
    bool WriteLine() { return write(m_hLine, LINE.data(), LENGTH) == ssize_t(LENGTH); }

private:
    bool Fill()
    {
        memmove(m_acBlock, m_acBlock + m_nBegin, m_nEnd - m_nBegin);
        m_nEnd -= m_nBegin;
        m_nBegin = 0;
        pollfd oLine = {m_hLine, POLLIN, 0};
        if (poll(&oLine, 1, int(TIMEOUT)) != 1)
            return false;
        const ssize_t nRead = read(m_hLine, m_acBlock + m_nEnd, sizeof m_acBlock - m_nEnd);
        m_nEnd += nRead > 0 ? static_cast<std::size_t>(nRead) : 0;
        return nRead > 0;
    }

    int m_hLine;
    std::size_t m_nBegin = 0;
    std::size_t m_nEnd = 0;
    char m_acBlock[8192];
};

class ByKorSerialLine
{
public:
    explicit ByKorSerialLine(const std::string& strName) { m_oLine.Open(strName.c_str()); }
    bool ReadLine(std::string& strLine)
    {
        return m_oLine.ReadUntil(m_strEnd, strLine, TIMEOUT) == CKorSerial::SERIAL_OK;
    }
    bool WriteLine() { return m_oLine.WriteText(LINE, TIMEOUT) == CKorSerial::SERIAL_OK; }

private:
    const std::string m_strEnd = "\n";
    CKorSerialLine m_oLine;
};

/// libserialport has no lines; it reads exactly as much as it is told.
class ByLibserialport
{
public:
    explicit ByLibserialport(const std::string& strName) : m_oLine(strName) {}
    bool ReadLine(std::string& strLine)
    {
        strLine.resize(LENGTH);
        return sp_blocking_read(m_oLine.Port(), strLine.data(), LENGTH, TIMEOUT) == int(LENGTH);
    }
    bool WriteLine()
    {
        return sp_blocking_write(m_oLine.Port(), LINE.data(), LENGTH, TIMEOUT) == int(LENGTH);
    }

private:
    LibserialportLine m_oLine;
};

/// Asio's synchronous calls, which have no time-out.
class ByAsio
{
public:
    explicit ByAsio(const std::string& strName) : m_oPort(m_oContext, strName) {}
    bool ReadLine(std::string& strLine)
    {
        const std::size_t nLength = asio::read_until(m_oPort, m_oBuffer, '\n');
        strLine.assign(static_cast<const char*>(m_oBuffer.data().data()), nLength);
        m_oBuffer.consume(nLength);
        return true;
    }
    bool WriteLine() { return asio::write(m_oPort, asio::buffer(LINE)) == LENGTH; }

private:
    asio::io_context m_oContext;
    asio::serial_port m_oPort;
    asio::streambuf m_oBuffer;
};

class ByQt
{
public:
    explicit ByQt(const std::string& strName)
    {
        m_oPort.setPortName(QString::fromStdString(strName));
        m_oPort.open(QIODevice::ReadWrite);
    }
    bool ReadLine(std::string& strLine)
    {
        while (!m_oPort.canReadLine()) {
            if (!m_oPort.waitForReadyRead(int(TIMEOUT)))
                return false;
        }
        strLine.resize(LENGTH + 1);
        strLine.resize(static_cast<std::size_t>(m_oPort.readLine(strLine.data(), LENGTH + 1)));
        return true;
    }
    bool WriteLine()
    {
        return m_oPort.write(LINE.data(), LENGTH) == LENGTH &&
               m_oPort.waitForBytesWritten(int(TIMEOUT));
    }

private:
    QSerialPort m_oPort;
};
