#pragma once

/// @file
/// How single sections of the gateway's INI file are read.

#include "examples/gateway/GatewaySettings.h"

/// "cellar" of "Line cellar"; empty for the section without a name.
/// @param pszKind  "Line"
/// @param[out] rstrName  the name, without blanks around it
/// @return whether the section is one of that kind
bool IsSectionOf(const char* pszKind, const std::string& strSection, std::string& rstrName);

/// Adds a finding about an option, or about a section when the option is empty.
void Complain(CKorIniOptionExchange* pExchange, const std::string& strSection,
              const std::string& strOption, const std::string& strText);

/// Reads a section [Line NAME].
void ExchangeLine(CKorIniOptionExchange* pExchange, LineSettings& roLine);

/// Reads a section [Meter NAME].
/// @param bOneMeter  it may hold the options of the former gateway
void ExchangeMeter(CKorIniOptionExchange* pExchange, MeterSettings& roMeter, bool bOneMeter);

/// Reads the section [Mqtt] and checks it.
void ExchangeMqtt(CKorIniOptionExchange* pExchange, MqttSettings& roMqtt);

/// Reads the section [Store] and checks it.
void ExchangeStore(CKorIniOptionExchange* pExchange, StoreSettings& roStore);

/// Gives meters that name no line the only one there is, checks what concerns several sections, and
/// adds what is wrong.
void CheckSettings(CKorIniOptionExchange* pExchange, GatewaySettings& roSettings);
