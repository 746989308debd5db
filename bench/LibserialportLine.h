#pragma once

#include <libserialport.h>
#include <string>

/// A pseudo-terminal opened by libserialport, which takes devices with modem lines only and names
/// below /dev only.
class LibserialportLine
{
public:
    explicit LibserialportLine(const std::string& strTerminal);
    ~LibserialportLine();
    LibserialportLine(const LibserialportLine&) = delete;
    LibserialportLine& operator=(const LibserialportLine&) = delete;

    /// Null when it could not be opened.
    sp_port* Port() const { return m_pPort; }

private:
    std::string m_strLink;
    sp_port* m_pPort = nullptr;
};
