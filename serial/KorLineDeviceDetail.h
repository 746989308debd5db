#pragma once

// The open device of a line: how it is taken, set and given back. Not installed.

#include "serial/KorLineTermiosDetail.h"
#include "serial/KorSerialLine.h"

#include <linux/serial.h>

/// One open device. Operations give 0 or an error number; none may run beside another.
class CKorLineDevice
{
public:
    static constexpr int NO_HANDLE = -1;

    CKorLineDevice() = default;
    ~CKorLineDevice() { Close(); }
    CKorLineDevice(const CKorLineDevice&) = delete;
    CKorLineDevice& operator=(const CKorLineDevice&) = delete;

    /// Takes the device. A failure leaves it as it was.
    int Open(const char* pszDevice, const SKorLineOptions& oOptions);
    /// Gives the device back as it was, unsent bytes discarded.
    void Close();
    int Handle() const { return m_hLine; }

    /// Changes the settings. A failure leaves the old ones.
    int SetOptions(const SKorLineOptions& oOptions);
    int SetRS485(const SKorRS485& oRS485);
    int SetLowLatency(bool bLowLatency);

private:
    /// What was done to the device and is to be undone.
    struct SDone
    {
        bool m_bLocked = false;
        bool m_bExclusiveMode = false;
        bool m_bSettings = false;
        bool m_bRS485 = false;
        bool m_bLowLatency = false;
    };

    int Take(const SKorLineOptions& oOptions);
    int Lock(bool bExclusive);
    void SetExclusiveMode(bool bExclusive);
    int Configure(const SKorLineOptions& oOptions);
    void Start(const SKorLineOptions& oOptions);
    void GiveBack();

    int m_hLine = NO_HANDLE;
    SKorLineOptions m_oOptions;
    SDone m_oDone;
    SKorLineSettings m_oBefore;
    serial_rs485 m_oRS485Before = {};
    bool m_bLowLatencyBefore = false;
};
