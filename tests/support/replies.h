#pragma once

#include "cmreply.h"
#include "printers.h"
#include "watchdog.h"

#include <gtest/gtest.h>

// A reply ends in one of three ways; each of these waits for the end and fails the test when it is
// another one, or none within the watchdog's time.

inline bool expectFinished(const CMVoidReply& reply)
{
    const bool finished = waitUntil([&] { return reply.isFinished(); });
    EXPECT_TRUE(finished) << "the reply did not finish";
    return finished;
}

/// The value; a default-constructed one after a failure.
template <class T>
T expectValue(const CMReply<T>& reply)
{
    if (!expectFinished(reply))
        return T();
    EXPECT_FALSE(reply.error().isSet()) << "failed: " << reply.error().message().toStdString();
    return reply.value();
}

/// The error, which must not be the one of a cancel.
inline CMError expectError(const CMVoidReply& reply)
{
    if (!expectFinished(reply))
        return CMError();
    EXPECT_TRUE(reply.error().isSet()) << "succeeded";
    EXPECT_NE(reply.error(), CMVoidReply::ErrorCancel()) << "was cancelled";
    return reply.error();
}

inline void expectError(const CMVoidReply& reply, const QString& message)
{
    EXPECT_EQ(expectError(reply).message(), message);
}

inline void expectCancelled(const CMVoidReply& reply)
{
    if (!expectFinished(reply))
        return;
    EXPECT_EQ(reply.error(), CMVoidReply::ErrorCancel());
}

/// Nothing that is due now finishes the reply.
inline void expectPending(const CMVoidReply& reply)
{
    settle();
    EXPECT_FALSE(reply.isFinished());
}
