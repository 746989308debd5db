#pragma once

#include "examples/gateway/MqttSettings.h"

#include <memory>
#include <mosquitto.h>
#include <string>

/// Gives a client of libmosquitto back.
struct MqttClientDeleter
{
    void operator()(mosquitto* pClient) const { mosquitto_destroy(pClient); }
};
using MqttClient = std::unique_ptr<mosquitto, MqttClientDeleter>;

/// Makes a client for one attempt to connect: with will, credentials and certificates.
/// @param oSettings     what to make it from; the files are read now
/// @param pUser         what the client's callbacks get
/// @param[out] rstrError  why there is none
/// @return null on failure
MqttClient MakeMqttClient(const MqttSettings& oSettings, void* pUser, std::string& rstrError);

/// A result of libmosquitto in words.
/// @param nError  `errno` right after the call
std::string MqttErrorText(int nResult, int nError);

/// Where a gateway says whether it is there.
std::string MqttStatusTopic(const MqttSettings& oSettings);
