#pragma once

#include "httpclient.h"

#include <QString>
#include <QVariant>

namespace ctl {

/// What the player answered.
struct Answer
{
    /// 0 when the player could not be reached.
    int code = 0;
    QVariantHash body;
    QString problem; ///< For people; empty when the call succeeded.

    bool ok() const { return problem.isEmpty() && code >= 200 && code < 300; }
};

/// Calls the control API of a running player and waits for the answer.
class ApiClient
{
public:
    /// `base` is the player's address, such as "http://127.0.0.1:6680"; `token` may be empty.
    ApiClient(const QString& base, const QString& token);

    /// `query` holds plain text.
    Answer get(const QString& path, const QList<QPair<QString, QString>>& query = {});
    Answer post(const QString& path, const QVariantHash& body = {});

private:
    TavuUrl url(const QString& path) const;
    HttpClientOptions options() const;
    /// What to tell people of an answer; empty for a success.
    QString problemOf(const HttpClient::Result& result, const QVariantHash& body) const;
    Answer wait(const std::function<void(const HttpClient::Callback&)>& send);

    QString m_base;
    QString m_token;
    HttpClient m_http;
};

} // namespace ctl
