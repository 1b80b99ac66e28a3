#include "controltoken.h"

#include "savefile.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>

namespace player {

namespace {

/// Long enough that nobody guesses it, short enough for a header field and a QR code.
bool isToken(const QByteArray& text)
{
    constexpr int shortest = 16;
    constexpr int longest = 256;
    return text.size() >= shortest && text.size() <= longest
        && std::all_of(
            text.begin(), text.end(), [](char byte) { return byte > ' ' && byte <= '~'; });
}

QByteArray randomToken()
{
    constexpr int words = 8;
    quint32 random[words];
    QRandomGenerator::system()->fillRange(random);
    return QByteArray(reinterpret_cast<const char*>(random), sizeof random).toHex();
}

} // namespace

ControlToken::ControlToken(const QString& fileName)
{
    read(fileName);
    if (m_text.isEmpty() && m_problem.isEmpty())
        make(fileName);
}

void ControlToken::read(const QString& fileName)
{
    QFile file(fileName);
    if (!file.exists())
        return;
    constexpr qint64 atMost = 4096;
    if (!file.open(QIODevice::ReadOnly)) {
        m_problem =
            QStringLiteral("The token file %1 cannot be read (%2). Make it readable, or set "
                           "control.token-file to another.")
                .arg(fileName, file.errorString());
        return;
    }
    const QByteArray text = file.read(atMost).trimmed();
    if (text.isEmpty())
        return;
    if (!isToken(text))
        m_problem = QStringLiteral("The token file %1 holds no token, which is 16 to 256 visible "
                                   "characters. Remove it, so that a token is made, or set "
                                   "control.token-file to another.")
                        .arg(fileName);
    else if (files::isOpenToOthers(file.permissions()))
        m_problem = QStringLiteral("The token file %1 can be read by others; run \"chmod 600 %1\".")
                        .arg(fileName);
    else
        m_text = QString::fromLatin1(text);
}

void ControlToken::make(const QString& fileName)
{
    const QByteArray token = randomToken();
    QString error;
    if (files::saveFile(fileName, token + '\n', files::privateFile, &error))
        m_text = QString::fromLatin1(token);
    else
        m_problem =
            QStringLiteral("The token cannot be kept (%1). Set control.token-file to a file "
                           "that can be written.")
                .arg(error);
}

} // namespace player
