#include "httpstaticfiles.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace http {

StaticFiles::StaticFiles(QString root, Headers headers)
    : m_root(std::move(root))
    , m_headers(std::move(headers))
{
}

QByteArray StaticFiles::contentType(const QString& file)
{
    static const QHash<QString, QByteArray> types{
        { QStringLiteral("html"), "text/html; charset=utf-8" },
        { QStringLiteral("css"), "text/css; charset=utf-8" },
        { QStringLiteral("js"), "text/javascript; charset=utf-8" },
        { QStringLiteral("mjs"), "text/javascript; charset=utf-8" },
        { QStringLiteral("json"), "application/json" },
        { QStringLiteral("webmanifest"), "application/manifest+json" },
        { QStringLiteral("txt"), "text/plain; charset=utf-8" },
        { QStringLiteral("svg"), "image/svg+xml" },
        { QStringLiteral("png"), "image/png" },
        { QStringLiteral("jpg"), "image/jpeg" },
        { QStringLiteral("jpeg"), "image/jpeg" },
        { QStringLiteral("webp"), "image/webp" },
        { QStringLiteral("gif"), "image/gif" },
        { QStringLiteral("ico"), "image/x-icon" },
        { QStringLiteral("woff2"), "font/woff2" },
        { QStringLiteral("flac"), "audio/flac" },
        { QStringLiteral("mp3"), "audio/mpeg" },
        { QStringLiteral("ogg"), "audio/ogg" },
        { QStringLiteral("opus"), "audio/ogg" },
        { QStringLiteral("m4a"), "audio/mp4" },
        { QStringLiteral("wav"), "audio/wav" },
    };
    return types.value(QFileInfo(file).suffix().toLower(), "application/octet-stream");
}

namespace {

/// Whether a component can only mean a plain entry of the folder before it.
bool isPlainName(const QString& name)
{
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')))
        return false;
    return std::none_of(name.begin(), name.end(), [](QChar c) {
        return c < QLatin1Char(' ') || c == QLatin1Char('/') || c == QLatin1Char('\\')
            || c == QLatin1Char(':');
    });
}

/// The file's path below the root; empty when the components do not spell one.
QString relativePath(QStringList segments)
{
    if (segments.isEmpty() || segments.last().isEmpty()) {
        if (!segments.isEmpty())
            segments.removeLast();
        segments += QStringLiteral("index.html");
    }
    if (!std::all_of(segments.begin(), segments.end(), isPlainName))
        return {};
    return segments.join(QLatin1Char('/'));
}

bool isResource(const QString& path)
{
    return path.startsWith(QLatin1String(":/"));
}

/// Symbolic links may lead out of the root; what they lead to must lie inside.
bool isInside(const QString& root, const QFileInfo& file)
{
    if (isResource(root))
        return true;
    const QString top = QFileInfo(root).canonicalFilePath();
    const QString real = file.canonicalFilePath();
    return !top.isEmpty() && real.startsWith(top + QLatin1Char('/'));
}

/// By content for resources, which do not change while the program runs and so are hashed once; by
/// time and size for files.
QByteArray etagOf(const QFileInfo& info)
{
    if (!isResource(info.filePath()))
        return '"' + QByteArray::number(info.lastModified().toMSecsSinceEpoch(), 16) + '-'
            + QByteArray::number(info.size(), 16) + '"';
    thread_local QHash<QString, QByteArray> known;
    QByteArray& etag = known[info.filePath()];
    if (etag.isEmpty()) {
        QFile file(info.filePath());
        QCryptographicHash hash(QCryptographicHash::Sha256);
        if (file.open(QIODevice::ReadOnly))
            hash.addData(&file);
        etag = '"' + hash.result().left(12).toHex() + '"';
    }
    return etag;
}

} // namespace

void StaticFiles::serve(const QStringList& segments, const Responder& responder) const
{
    const QString relative = relativePath(segments);
    const QFileInfo info(m_root + QLatin1Char('/') + relative);
    if (relative.isEmpty() || !info.isFile() || !isInside(m_root, info)) {
        responder.send(Response::text(404, "404 Not Found\n"));
        return;
    }
    ContentInfo content;
    content.contentType = contentType(relative);
    content.etag = etagOf(info);
    content.headers = m_headers;
    if (!content.headers.contains("Cache-Control"))
        content.headers.set("Cache-Control", "no-cache");
    responder.sendFile(info.filePath(), content);
}

} // namespace http
