#include "refusedtoken.h"

#include "cmroot.h"

namespace httpclient {

CMPath refusedTokenPath()
{
    return CMPath(QStringLiteral("/oauth2/refusedToken"));
}

void tellOfRefusal(int code, const HttpClientHeaders& sent)
{
    const QByteArray scheme("Bearer ");
    const QByteArray authorization = sent.value("authorization");
    if ((code != 401 && code != 403) || !authorization.startsWith(scheme))
        return;
    CMRoot()->invoke(refusedTokenPath(), QString::fromLatin1(authorization.mid(scheme.size())),
        CMReply<QVariant>::create());
}

} // namespace httpclient
