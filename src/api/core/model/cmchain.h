#pragma once

#include "cmreply.h"

#include <memory>
#include <utility>

/// The one way to wait on an inner reply and complete an outer one. Every continuation is bound to
/// a CMContext, whose death disarms it.
class CMContext
{
public:
    CMContext() = default;
    Q_DISABLE_COPY_MOVE(CMContext)

    std::weak_ptr<void> token() const { return m_token; }

private:
    std::shared_ptr<void> m_token = std::make_shared<char>();
};

namespace cmchain {

/// Calls `function(inner)` when `inner` finishes in whatever way, on the calling thread; nothing
/// when `context` has died by then. `context` must die on the calling thread.
template <class T, class Function>
void whenFinished(const CMReply<T>& inner, const CMContext& context, Function function)
{
    inner.addWatcher(
        [alive = context.token(), function = std::move(function)](const CMVoidReply& reply) {
            if (!alive.expired())
                function(CMReply<T>(reply));
        });
}

/// Calls `function(value)` when `inner` succeeds, on the calling thread; nothing when it fails or
/// when `context` has died by then. `context` must die on the calling thread.
template <class T, class Function>
void onSuccess(const CMReply<T>& inner, const CMContext& context, Function function)
{
    inner.onSuccess([alive = context.token(), function = std::move(function)](const T& value) {
        if (!alive.expired())
            function(value);
    });
}

/// Copies the error of `inner`, a cancel included, to `outer` unchanged, or calls
/// `function(value)`, which is to complete `outer` some time. When `context` has died by then
/// `outer` is cancelled.
template <class T, class U, class Function>
void whenSucceeded(
    const CMReply<T>& inner, const CMReply<U>& outer, const CMContext& context, Function function)
{
    inner.addWatcher(
        [alive = context.token(), outer, function = std::move(function)](const CMVoidReply& reply) {
            const CMError error = reply.error();
            if (error.isSet())
                outer.setError(error);
            else if (alive.expired())
                outer.cancel();
            else
                function(CMReply<T>(reply).value());
        });
}

/// Completes `outer` as `inner` completes.
template <class T>
void forward(const CMReply<T>& inner, const CMReply<T>& outer)
{
    inner.addWatcher([outer](const CMVoidReply& reply) {
        const CMError error = reply.error();
        if (error.isSet())
            outer.setError(error);
        else
            outer.setValue(CMReply<T>(reply).value());
    });
}

} // namespace cmchain
