#pragma once

#include "controlserver.h"
#include "fakeplayer.h"
#include "rawpeer.h"
#include "tavujson.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <memory>

/// A control server over a fake player on a free port of loopback.
class ControlFixture : public ::testing::Test
{
protected:
    /// The server, made at the first use with the options set so far.
    control::ControlServer& server();
    quint16 port();

    RawPeer::Answer get(const QByteArray& target, const QByteArray& fields = {});
    RawPeer::Answer post(const QByteArray& target, const QByteArray& body = "{}");
    /// Sends a request whose reply the test holds; waits until the player has been asked.
    std::unique_ptr<RawPeer> begin(
        const QByteArray& method, const QByteArray& target, const QByteArray& body = {});
    /// The row as a client gets it from a rows request.
    QVariantHash shown(const QVariantHash& row);

    control::Options options;
    FakePlayer player;

private:
    std::unique_ptr<control::ControlServer> m_server;
    quint16 m_port = 0;
};

/// The JSON object in an answer.
QVariantHash object(const RawPeer::Answer& answer);
/// A hash from JSON, for short tests.
QVariantHash hash(const char* json);
/// A value on the way into a JSON object, such as "parent.title" or "rows.0.ref".
QVariant at(const QVariant& value, const char* way);
