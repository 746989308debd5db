#pragma once

#include "event/KorEventLoop.h"
#include "examples/gateway/MqttSettings.h"

#include <memory>
#include <string>

/// What becomes of messages, told on the loop's thread.
class BrokerListener
{
public:
    virtual ~BrokerListener() = default;

    /// The broker has accepted us. It knows nothing of what was published before.
    virtual void Connected() = 0;
    /// The connection is gone; no message of it is acknowledged any more.
    virtual void Disconnected() = 0;
    /// The broker has taken a message over. Publish nothing from here.
    virtual void Acknowledged(int nMessage) = 0;
    /// There may be room for more messages.
    virtual void MayPublish() = 0;
};

/// A way to a broker, kept up by itself.
class BrokerConnection
{
public:
    virtual ~BrokerConnection() = default;

    /// Begins to connect, and again whenever the connection is lost.
    virtual void Start() = 0;

    /// Waits until everything published was acknowledged, and leaves the broker for good.
    /// @param nMilliseconds  how long to wait at most
    virtual void Stop(unsigned int nMilliseconds) = 0;

    /// Whether the broker has accepted us.
    virtual bool IsConnected() const = 0;

    /// Publishes a retained message.
    /// @return its number; 0 when there is no connection (any more); -1 when the message itself
    ///         is refused
    virtual int Publish(const std::string& strTopic, const std::string& strPayload) = 0;

    /// The broker in words.
    virtual std::string Name() const = 0;
    /// Why the connection failed last; empty when it did not.
    virtual const std::string& LastError() const = 0;
};

/// The connection that the settings ask for.
/// @param oSettings    prefix and client id are fit to be used
/// @param rListener    outlives the connection, as the loop does
std::unique_ptr<BrokerConnection> MakeBrokerConnection(CKorEventLoop& oLoop,
                                                       const MqttSettings& oSettings,
                                                       BrokerListener& rListener);
