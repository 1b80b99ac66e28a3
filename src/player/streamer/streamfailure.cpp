#include "streamfailure.h"

#include "httpmessage.h"
#include "streamer.h"

namespace player {

namespace {

TrCharData text(const char* sourceText)
{
    return TrCharData(trExtractContext("streamer"), sourceText);
}

QString statusText(int httpStatus)
{
    const QByteArray number = QByteArray::number(httpStatus);
    return QString::fromLatin1((number + ' ' + http::reasonPhrase(httpStatus)).trimmed());
}

const char* httpText(int httpStatus)
{
    switch (httpStatus) {
    case 401:
    case 403:
        return "%1 refused the stream (%2). Please play it again to renew the access.";
    case 404:
    case 410:
        return "%1 does not have the stream (%2). Please choose something else.";
    default:
        return "%1 answered %2. Please try again later.";
    }
}

TrString transferReason(const StreamFailure& failure)
{
    const QList<TrArg> host{ failure.host };
    switch (failure.kind) {
    case StreamFailure::NameNotResolved:
        return { text("The name %1 is not known. Please check the network."), host };
    case StreamFailure::ConnectFailed:
        return { text("%1 could not be reached. Please check the network."), host };
    case StreamFailure::TlsFailed:
        return { text("The connection to %1 is not secure: %2. Please check service.ca-file in the "
                      "settings."),
            { failure.host, failure.detail } };
    case StreamFailure::LocalAddress:
        return { text("%1 leads to this machine or its link, where a public service must not lead. "
                      "Please choose something else."),
            host };
    case StreamFailure::Stalled:
        return { text("%1 sends nothing any more. Please try again later."), host };
    case StreamFailure::Interrupted:
        return { text("%1 broke off the stream. Please try again later."), host };
    case StreamFailure::HttpError:
        return { text(httpText(failure.httpStatus)),
            { failure.host, statusText(failure.httpStatus) } };
    case StreamFailure::TooManyRedirects:
        return { text("%1 redirects in a circle. Please choose something else."), host };
    case StreamFailure::Downgraded:
        return { text("%1 redirects to an insecure address. Please choose something else."), host };
    case StreamFailure::Changed:
        return { text("The stream at %1 has changed meanwhile. Please play it again."), host };
    default:
        return {};
    }
}

TrString notAudio(const StreamFailure& failure)
{
    if (failure.detail.isEmpty())
        return { text("What %1 sent is not audio. Please choose something else."),
            { failure.host } };
    return { text("What %1 sent is not audio but %2. Please choose something else."),
        { failure.host, failure.detail } };
}

TrString reason(const StreamFailure& failure)
{
    const QList<TrArg> host{ failure.host };
    switch (failure.kind) {
    case StreamFailure::BadAddress:
        return { text("It has no usable stream address. Please choose something else.") };
    case StreamFailure::BadKeyHeaders:
        return { text("Its key headers are malformed. Please choose something else.") };
    case StreamFailure::Empty:
        return { text("The stream at %1 is empty. Please choose something else."), host };
    case StreamFailure::NotAudio:
        return notAudio(failure);
    case StreamFailure::NoDecoder:
        return { text("There is no decoder for %1. Please install one."), { failure.detail } };
    case StreamFailure::Damaged:
        return { text("The stream at %1 is damaged. Please choose something else."), host };
    case StreamFailure::EndedEarly:
        return { text("The stream at %1 ended too early. Please try again later."), host };
    default:
        return transferReason(failure);
    }
}

CMError outputError(const StreamFailure& failure)
{
    const TrString message = failure.kind == StreamFailure::NoOutput
        ? TrString(text("There is no sound device. Please connect one or set another output."))
        : TrString(text("The sound output failed: %1 Please check it or set another output."),
            { failure.detail });
    CMError error(message);
    error.setName(outputErrorName());
    return error;
}

} // namespace

bool isRefusal(int httpStatus)
{
    return httpStatus == 401 || httpStatus == 403 || httpStatus == 404 || httpStatus == 410;
}

CMError streamError(const QString& title, const StreamFailure& failure)
{
    if (failure.kind == StreamFailure::OutputFailed || failure.kind == StreamFailure::NoOutput)
        return outputError(failure);
    CMError error(TrString(text("Cannot play \"%1\". %2"), { title, reason(failure).toString() }));
    if (failure.httpStatus != 0)
        error.__set(streamErrorHttpCode(), failure.httpStatus);
    return error;
}

QString streamErrorHttpCode()
{
    return QStringLiteral("httpCode");
}

QString outputErrorName()
{
    return Streamer::outputErrorName();
}

} // namespace player
