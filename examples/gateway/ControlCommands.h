#pragma once

#include "examples/gateway/ControlClient.h"
#include "examples/gateway/Poller.h"
#include "examples/gateway/ReadingOutlet.h"
#include "time/KorTimeout.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Answers those who look in. A request is a form of answer, "text" or "json", a command and what
/// it needs: "text status", "json meters", "text poll cellar", "json reload", "text check".
///
/// The statuses are those of gatewayctl: 0 all is well, 1 it is not - no reading, findings in the
/// settings -, 2 the request makes no sense.
class ControlCommands
{
public:
    using Findings = std::vector<SKorIniFinding>;

    /// All of them outlive it.
    /// @param pSettings  the settings in force
    /// @param fnReload   reads the settings again and tells what is wrong with them
    ControlCommands(Poller& oPoller, const ReadingOutlet& oOutlet,
                    const std::unique_ptr<GatewaySettings>& pSettings,
                    std::function<Findings()> fnReload);

    /// Answers a request, now or when it is done.
    void Answer(const std::string& strRequest, const ControlReply& fnReply);

private:
    void Poll(bool bJson, const std::string& strMeter, const ControlReply& fnReply);
    void ReplyFindings(bool bJson, const Findings& vecFindings, const ControlReply& fnReply) const;
    Findings Check() const;
    std::string StatusJson() const;
    std::string StatusText() const;

    Poller& m_oPoller;
    const ReadingOutlet& m_oOutlet;
    const std::unique_ptr<GatewaySettings>& m_pSettings;
    std::function<Findings()> m_fnReload;
    CKorStopwatch m_oRunning;
};
