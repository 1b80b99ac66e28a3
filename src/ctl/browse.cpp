#include "browse.h"

namespace ctl {

namespace {

constexpr int windowSize = 100;
constexpr int rowsAtMost = 2000;

QString titleOf(const QVariant& row)
{
    return row.toHash().value(QStringLiteral("title")).toString();
}

} // namespace

QStringList stepsOf(const QString& walk)
{
    const QLatin1Char slash('/');
    const QLatin1Char escape('\\');
    QStringList steps{ QString() };
    for (int at = 0; at < walk.size(); ++at) {
        const bool escapes = walk[at] == escape && at + 1 < walk.size()
            && (walk[at + 1] == slash || walk[at + 1] == escape);
        if (walk[at] == slash)
            steps.append(QString());
        else
            steps.last().append(escapes ? walk[++at] : walk[at]);
    }
    steps.removeAll(QString());
    return steps;
}

QString asStep(const QString& text)
{
    return QString(text)
        .replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('/'), QLatin1String("\\/"));
}

QVariantHash pickRow(const QVariantList& rows, const QString& step)
{
    for (const QVariant& row : rows) {
        if (titleOf(row).compare(step, Qt::CaseInsensitive) == 0)
            return row.toHash();
    }
    bool isNumber = false;
    const int number = step.toInt(&isNumber);
    return isNumber && number >= 1 && number <= rows.size() ? rows.at(number - 1).toHash()
                                                            : QVariantHash();
}

Answer Browse::screen(const QString& path, Screen& screen)
{
    screen = Screen{ path, QString(), {}, 0 };
    Answer answer;
    do {
        const int from = screen.rows.size();
        answer = m_api.get(QStringLiteral("/rows"),
            { { QStringLiteral("path"), path }, { QStringLiteral("from"), QString::number(from) },
                { QStringLiteral("to"), QString::number(from + windowSize - 1) } });
        if (!answer.ok())
            return answer;
        screen.title = titleOf(answer.body.value(QStringLiteral("parent")));
        screen.count = answer.body.value(QStringLiteral("count")).toInt();
        const QVariantList rows = answer.body.value(QStringLiteral("rows")).toList();
        if (rows.isEmpty())
            break;
        screen.rows += rows;
    } while (screen.rows.size() < qMin(screen.count, rowsAtMost));
    return answer;
}

Answer Browse::walk(const QString& steps, QVariantHash& row)
{
    row.clear();
    Answer answer;
    answer.code = 200;
    for (const QString& name : stepsOf(steps)) {
        const QVariantHash from = row;
        const bool searches = from.isEmpty() && name.startsWith(QLatin1Char('?'));
        answer = searches ? search(name.mid(1).trimmed(), row) : step(name, from, row);
        if (!answer.problem.isEmpty())
            return answer;
    }
    return answer;
}

Answer Browse::search(const QString& text, QVariantHash& row)
{
    Answer answer = m_api.post(QStringLiteral("/search"), { { QStringLiteral("text"), text } });
    row = { { QStringLiteral("title"), text },
        { QStringLiteral("path"), answer.body.value(QStringLiteral("path")) } };
    return answer;
}

Answer Browse::step(const QString& step, const QVariantHash& from, QVariantHash& row)
{
    Screen here;
    Answer answer = screen(from.value(QStringLiteral("path")).toString(), here);
    if (!answer.ok())
        return answer;
    row = pickRow(here.rows, step);
    if (row.isEmpty())
        answer.problem = QStringLiteral("There is no row \"%1\" %2.")
                             .arg(step,
                                 from.isEmpty() ? QStringLiteral("at the root")
                                                : QStringLiteral("in \"%1\"").arg(titleOf(from)));
    return answer;
}

} // namespace ctl
