#include "messages.h"

#include "tavuenums.h"

namespace ctl {

namespace {

QString text(const QVariantHash& hash, const char* key)
{
    return hash.value(QString::fromLatin1(key)).toString();
}

QString buttonLines(const QVariantList& rows)
{
    QString lines;
    int number = 0;
    for (const QVariant& entry : buttonsOf(rows)) {
        const QVariantHash button = entry.toHash();
        lines += QStringLiteral("\n  (%1) %2").arg(++number).arg(text(button, "title"));
        const QString link = text(button, "link");
        if (!link.isEmpty())
            lines += QLatin1String("  ") + link;
    }
    return lines;
}

} // namespace

QString words(const QString& title, const QString& text)
{
    // The title of failures that have none says nothing.
    const bool says = !title.isEmpty() && title != QLatin1String("Error");
    if (!says && !text.isEmpty())
        return text;
    return text.isEmpty() || text == title ? title : title + QLatin1String(": ") + text;
}

QString messageText(const QVariantHash& message)
{
    return text(message, "at") + QLatin1String("  ")
        + words(text(message, "title"), text(message, "text"))
        + buttonLines(message.value(QStringLiteral("rows")).toList());
}

QString screenText(const QVariantList& rows)
{
    const QVariantHash head = rows.value(0).toHash();
    return words(text(head, "title"), text(head, "longDescription")) + buttonLines(rows);
}

QVariantList buttonsOf(const QVariantList& rows)
{
    QVariantList buttons;
    for (const QVariant& entry : rows) {
        const int type = entry.toHash().value(QStringLiteral("type")).toInt();
        if (type == TavuRolesType::Action || type == TavuRolesType::Link)
            buttons += entry;
    }
    return buttons;
}

QVariantList resultRows(ApiClient& api, const Answer& answer)
{
    const QVariantHash reply =
        answer.body.value(QStringLiteral("actionReply"), answer.body).toHash();
    const QString path = text(reply.value(QStringLiteral("result")).toHash(), "path");
    if (path.isEmpty())
        return {};
    return api.get(QStringLiteral("/rows"), { { QStringLiteral("path"), path } })
        .body.value(QStringLiteral("rows"))
        .toList();
}

Answer readMessages(ApiClient& api, QVariantList& messages)
{
    Answer answer = api.get(QStringLiteral("/messages"));
    messages = answer.body.value(QStringLiteral("messages")).toList();
    return answer;
}

} // namespace ctl
