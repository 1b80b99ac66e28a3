#pragma once

#include "httprouter.h"
#include "httpserver.h"
#include "rawpeer.h"
#include "watchdog.h"

#include <gtest/gtest.h>

/// A server with a router on a free port of loopback, living in the test's thread.
class ServerFixture : public ::testing::Test
{
protected:
    ServerFixture();

    /// Listens, once, with the limits set so far.
    quint16 port();
    void add(const QByteArray& method, const char* pattern, http::Handler handler);
    /// GET of the pattern answers with the text.
    void answerText(const char* pattern, const QByteArray& text);

    http::Limits limits;
    http::Router router;
    http::Server server;

private:
    quint16 m_port = 0;
};
