#pragma once

#include "httpresponder.h"

namespace http {

/// Serves the files below one root: a folder, or a Qt resource folder such as ":/web". Nothing
/// outside the root is reached, whatever the spelling, nor through symbolic links; hidden files are
/// not served. Files carry an ETag and are to be revalidated at each use.
class StaticFiles
{
public:
    explicit StaticFiles(QString root, Headers headers = {});

    /// Answers with the file of the path given by decoded components: 200, 206, 304, 404, 416. The
    /// root and paths that end in a slash mean their "index.html".
    void serve(const QStringList& segments, const Responder& responder) const;

    /// The media type by the file's suffix; "application/octet-stream" for an unknown one.
    static QByteArray contentType(const QString& file);

private:
    QString m_root;
    Headers m_headers;
};

} // namespace http
