#include "examples/gateway/ControlCommands.h"

#include "examples/gateway/JsonObject.h"
#include "examples/gateway/MeterReports.h"
#include "time/KorIsoTime.h"

#include <unistd.h>
#include <utility>

namespace
{

enum EStatus
{
    STATUS_WELL = 0,
    STATUS_NOT_WELL = 1,
    STATUS_NOT_UNDERSTOOD = 2
};

/// Takes the first word off a text.
std::string TakeWord(std::string& rstrText)
{
    const std::size_t nEnd = std::min(rstrText.find(' '), rstrText.size());
    std::string strWord = rstrText.substr(0, nEnd);
    rstrText.erase(0, nEnd + 1);
    return strWord;
}

std::string BrokerJson(const PublisherState& oState)
{
    const auto fnCount = [](std::uint64_t nCount) { return static_cast<std::int64_t>(nCount); };
    return JsonObject()
        .Text("name", oState.m_strBroker)
        .Bool("connected", oState.m_bConnected)
        .Integer("waiting", fnCount(oState.m_nQueued))
        .Integer("published", fnCount(oState.m_nPublished))
        .Integer("acknowledged", fnCount(oState.m_nAcknowledged))
        .Integer("dropped", fnCount(oState.m_nDropped))
        .Integer("damaged", fnCount(oState.m_nDamaged))
        .Text("lastError", oState.m_strLastError)
        .ToString();
}

std::string BrokerText(const PublisherState& oState)
{
    if (oState.m_strBroker == "log")
        return "the log";
    std::string strText = oState.m_strBroker;
    strText += oState.m_bConnected ? ", connected: " : ", not connected: ";
    for (const auto& [nCount, pszWhat] : {std::make_pair(oState.m_nQueued, " waiting, "),
                                          std::make_pair(oState.m_nPublished, " published, "),
                                          std::make_pair(oState.m_nAcknowledged, " acknowledged, "),
                                          std::make_pair(oState.m_nDropped, " dropped")})
        strText += std::to_string(nCount) + pszWhat;
    if (!oState.m_strLastError.empty())
        strText += "; last error: " + oState.m_strLastError;
    return strText;
}

std::size_t AnsweringOf(const Poller& oPoller)
{
    std::size_t nAnswering = 0;
    for (const std::shared_ptr<PolledMeter>& pMeter : oPoller.Meters())
        nAnswering += pMeter->IsAnswering() && pMeter->LastReading() &&
                      oPoller.LineOf(*pMeter).Line().IsOpen();
    return nAnswering;
}

} // namespace

ControlCommands::ControlCommands(Poller& oPoller, const ReadingOutlet& oOutlet,
                                 const std::unique_ptr<GatewaySettings>& pSettings,
                                 std::function<Findings()> fnReload)
    : m_oPoller(oPoller),
      m_oOutlet(oOutlet),
      m_pSettings(pSettings),
      m_fnReload(std::move(fnReload))
{
}

void ControlCommands::Answer(const std::string& strRequest, const ControlReply& fnReply)
{
    std::string strRest = strRequest;
    const std::string strForm = TakeWord(strRest);
    const std::string strCommand = TakeWord(strRest);
    const bool bJson = strForm == "json";
    if (!bJson && strForm != "text")
        return fnReply(STATUS_NOT_UNDERSTOOD, "a request begins with \"text\" or \"json\"\n");
    if (strCommand == "status")
        return fnReply(STATUS_WELL, bJson ? StatusJson() : StatusText());
    if (strCommand == "meters")
        return fnReply(STATUS_WELL, bJson ? MetersJson(m_oPoller) + "\n" : MetersText(m_oPoller));
    if (strCommand == "poll")
        return Poll(bJson, strRest, fnReply);
    if (strCommand == "reload")
        return ReplyFindings(bJson, m_fnReload(), fnReply);
    if (strCommand == "check")
        return ReplyFindings(bJson, Check(), fnReply);
    fnReply(STATUS_NOT_UNDERSTOOD, "there is no such command\n");
}

void ControlCommands::Poll(bool bJson, const std::string& strMeter, const ControlReply& fnReply)
{
    const auto fnWaiter = [=](const Reading* pReading, const std::string& strError) {
        const int nStatus = pReading != nullptr ? STATUS_WELL : STATUS_NOT_WELL;
        if (bJson)
            fnReply(nStatus,
                    (pReading != nullptr ? ReadingJson(*pReading)
                                         : JsonObject().Text("error", strError).ToString()) +
                        "\n");
        else
            fnReply(nStatus,
                    (pReading != nullptr ? ReadingText(*pReading) : strMeter + ": " + strError) +
                        "\n");
    };
    if (!m_oPoller.PollNow(strMeter, fnWaiter))
        fnWaiter(nullptr, "there is no such meter");
}

void ControlCommands::ReplyFindings(bool bJson, const Findings& vecFindings,
                                    const ControlReply& fnReply) const
{
    const std::string strFile = m_pSettings->GetIniFileName();
    std::string strText;
    std::vector<std::string> vecJson;
    for (const SKorIniFinding& oFinding : vecFindings) {
        strText += FindingText(strFile, oFinding) + "\n";
        vecJson.push_back(JsonObject()
                              .Integer("line", oFinding.m_nLine)
                              .Text("text", oFinding.m_strText)
                              .ToString());
    }
    if (bJson)
        strText =
            JsonObject().Text("file", strFile).Json("findings", JsonArray(vecJson)).ToString() +
            "\n";
    else if (vecFindings.empty())
        strText = strFile + ": good\n";
    fnReply(vecFindings.empty() ? STATUS_WELL : STATUS_NOT_WELL, strText);
}

ControlCommands::Findings ControlCommands::Check() const
{
    GatewaySettings oNew(m_pSettings->GetIniFileName().c_str(), CKorIniFile::PATH_UNCHANGED);
    oNew.Load();
    return oNew.GetFindings();
}

std::string ControlCommands::StatusJson() const
{
    return JsonObject()
               .Integer("process", getpid())
               .Integer("runningSeconds",
                        static_cast<std::int64_t>(m_oRunning.GetElapsed().GetTotalSeconds()))
               .Text("time", KorToIsoString(CKorUTCTime::CurrentTime()))
               .Text("settings", m_pSettings->GetIniFileName())
               .Integer("meters", static_cast<int>(m_oPoller.Meters().size()))
               .Integer("answering", static_cast<int>(AnsweringOf(m_oPoller)))
               .Json("lines", LinesJson(m_oPoller))
               .Json("broker", BrokerJson(m_oOutlet.State()))
               .ToString() +
           "\n";
}

std::string ControlCommands::StatusText() const
{
    return "process   " + std::to_string(getpid()) + ", running for " +
           KorToString(m_oRunning.GetElapsed(), CKorTimeDiff::eDiffHhMmSs) + "\nsettings  " +
           m_pSettings->GetIniFileName() + "\nreadings  to " + BrokerText(m_oOutlet.State()) +
           "\nmeters    " + std::to_string(m_oPoller.Meters().size()) + ", of which " +
           std::to_string(AnsweringOf(m_oPoller)) + " answer\n\n" + LinesText(m_oPoller);
}
