#include "examples/gateway/MeterReports.h"

#include "examples/gateway/JsonObject.h"
#include "examples/gateway/LogSink.h"
#include "examples/gateway/ReadingText.h"
#include "examples/gateway/TextTable.h"
#include "time/KorIsoTime.h"

#include <cstdio>

namespace
{

/// "no line", "waits" before the first poll, "answers" or "fails".
const char* StateOf(const PolledMeter& oMeter, const LinePoller& oLine)
{
    if (!oLine.Line().IsOpen())
        return "no line";
    if (oMeter.Statistics().Polls() == 0)
        return "waits";
    return oMeter.IsAnswering() ? "answers" : "fails";
}

double MilliSeconds(std::uint32_t nMicroSeconds)
{
    return nMicroSeconds / 1000.0;
}

std::string TimesJson(const MeterStatistics::ResponseTimes& oTimes)
{
    return JsonObject()
        .Number("minimum", MilliSeconds(oTimes.m_nMinimum), 3)
        .Number("median", MilliSeconds(oTimes.m_nMedian), 3)
        .Number("maximum", MilliSeconds(oTimes.m_nMaximum), 3)
        .ToString();
}

std::string TimesText(const MeterStatistics::ResponseTimes& oTimes)
{
    char szText[64];
    std::snprintf(szText, sizeof szText, "%.1f/%.1f/%.1f", MilliSeconds(oTimes.m_nMinimum),
                  MilliSeconds(oTimes.m_nMedian), MilliSeconds(oTimes.m_nMaximum));
    return szText;
}

std::string ErrorJson(const MeterStatistics& oStatistics)
{
    if (oStatistics.LastError().empty())
        return "null";
    return JsonObject()
        .Text("text", oStatistics.LastError())
        .Text("time", KorToIsoString(oStatistics.LastErrorTime()))
        .ToString();
}

JsonObject Statistics(const PolledMeter& oMeter)
{
    const MeterStatistics& oStatistics = oMeter.Statistics();
    const ModbusCounters& oRequests = oStatistics.Requests();
    JsonObject oJson;
    oJson.Integer("polls", oStatistics.Polls())
        .Integer("readings", oStatistics.Readings())
        .Integer("requests", oRequests.nRequests)
        .Integer("repetitions", oRequests.nRetries)
        .Integer("timeouts", oRequests.nTimeouts)
        .Integer("crcErrors", oRequests.nCrcErrors)
        .Integer("exceptions", oRequests.nExceptions)
        .Integer("otherErrors", oRequests.nOtherErrors)
        .Json("responseMs", TimesJson(oStatistics.Times()))
        .Json("lastError", ErrorJson(oStatistics));
    return oJson;
}

std::string MeterJson(const PolledMeter& oMeter, const LinePoller& oLine)
{
    const MeterSettings& oSettings = oMeter.Settings();
    return JsonObject()
        .Text("meter", oSettings.m_strName)
        .Text("line", oSettings.m_strLine)
        .Integer("unit", oSettings.m_nUnit)
        .Text("state", StateOf(oMeter, oLine))
        .Json("statistics", Statistics(oMeter).ToString())
        .Json("reading", oMeter.LastReading() ? ReadingJson(*oMeter.LastReading()) : "null")
        .ToString();
}

std::vector<std::string> MeterRow(const PolledMeter& oMeter, const LinePoller& oLine)
{
    const MeterSettings& oSettings = oMeter.Settings();
    const MeterStatistics& oStatistics = oMeter.Statistics();
    const ModbusCounters& oRequests = oStatistics.Requests();
    const bool bFails = !oMeter.IsAnswering();
    const std::string strLast = bFails || !oMeter.LastReading()
                                    ? oStatistics.LastError()
                                    : ReadingText(*oMeter.LastReading());
    return {oSettings.m_strName,
            oSettings.m_strLine,
            std::to_string(oSettings.m_nUnit),
            StateOf(oMeter, oLine),
            std::to_string(oStatistics.Polls()),
            std::to_string(oStatistics.Readings()),
            std::to_string(oRequests.nTimeouts),
            std::to_string(oRequests.nCrcErrors),
            std::to_string(oRequests.nExceptions),
            TimesText(oStatistics.Times()),
            strLast};
}

} // namespace

std::string StatisticsJson(const PolledMeter& oMeter)
{
    return Statistics(oMeter).ToString();
}

std::string ReadingJson(const Reading& oReading)
{
    return JsonObject()
        .Text("time", KorToIsoString(oReading.m_oTime))
        .Json("values", ValuesJson(oReading))
        .ToString();
}

std::string MetersJson(const Poller& oPoller)
{
    std::vector<std::string> vecMeters;
    for (const std::shared_ptr<PolledMeter>& pMeter : oPoller.Meters())
        vecMeters.push_back(MeterJson(*pMeter, oPoller.LineOf(*pMeter)));
    return JsonArray(vecMeters);
}

std::string MetersText(const Poller& oPoller)
{
    TextTable oTable({"METER", "LINE", "UNIT", "STATE", "POLLS", "READINGS", "TIME-OUTS", "CRC",
                      "EXCEPTIONS", "MS MIN/MEDIAN/MAX", "LAST READING OR ERROR"});
    for (const std::shared_ptr<PolledMeter>& pMeter : oPoller.Meters())
        oTable.Add(MeterRow(*pMeter, oPoller.LineOf(*pMeter)));
    return oTable.ToString();
}

std::string LinesJson(const Poller& oPoller)
{
    std::vector<std::string> vecLines;
    for (const std::unique_ptr<LinePoller>& pLine : oPoller.Lines()) {
        const GatewayLine& oLine = pLine->Line();
        vecLines.push_back(JsonObject()
                               .Text("line", oLine.Settings().m_strName)
                               .Text("device", oLine.Settings().m_strDevice)
                               .Bool("open", oLine.IsOpen())
                               .Integer("openings", oLine.Openings())
                               .Integer("meters", static_cast<int>(pLine->Meters().size()))
                               .Text("lastError", oLine.Error())
                               .ToString());
    }
    return JsonArray(vecLines);
}

std::string LinesText(const Poller& oPoller)
{
    TextTable oTable({"LINE", "DEVICE", "STATE", "OPENINGS", "METERS", "LAST ERROR"});
    for (const std::unique_ptr<LinePoller>& pLine : oPoller.Lines()) {
        const GatewayLine& oLine = pLine->Line();
        oTable.Add({oLine.Settings().m_strName, oLine.Settings().m_strDevice,
                    oLine.IsOpen() ? "open" : "closed", std::to_string(oLine.Openings()),
                    std::to_string(pLine->Meters().size()), oLine.Error()});
    }
    return oTable.ToString();
}
