#pragma once

#include "httptransfer.h"

namespace player {

/// A connection to a stream's host beside the one that the stream occupies, left in the loop for
/// whoever comes next. To have it, the head of the stream is asked for; the answer does not matter.
///
/// In the loop's thread only. Destroying it while it connects gives the connection up.
class SpareConnection : public HttpTransfer::Receiver
{
public:
    /// It has begun when the constructor returns.
    SpareConnection(TransferLoop& loop, const HttpOptions& options, const QByteArray& url,
        const QList<QByteArray>& headers)
        : m_transfer(std::make_unique<HttpTransfer>(
            loop, *this, options, HttpTransfer::Method::Head, url, headers, 0))
    {
    }

private:
    bool headArrived(const HttpTransfer::Head&) override { return true; }
    bool dataArrived(const char*, std::size_t) override { return true; }
    void transferFinished(CURLcode) override { m_transfer.reset(); }

    std::unique_ptr<HttpTransfer> m_transfer;
};

} // namespace player
