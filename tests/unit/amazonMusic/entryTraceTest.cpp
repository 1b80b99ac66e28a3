#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

/// Functions as the formatter leaves them: both braces of the body at the beginning of a line.
const QRegularExpression function(QStringLiteral("^([^\\s#/{}][^;{}]*\\([^;]*?)\\n\\{\\n(.*?)^\\}"),
    QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);

/// One statement may stand before the trace, to compute what it shows.
const QRegularExpression traced(QStringLiteral("^\\s*(//[^\\n]*\\n\\s*)?(const [^;]*;\\s*)?"
                                               "(AMAZON_MUSIC_ENTER(_SCOPE|_WITH)?\\(|LOG4CPLUS_"
                                               "INFO\\(logger\\(\\), \"Enter \" << Q_FUNC_INFO)"));

TEST(EntryTrace, BeginsEveryFunctionOfThePlugin)
{
    int functions = 0;
    const QDir folder(QStringLiteral(AMAZON_MUSIC_SOURCES));
    const QStringList names = folder.entryList({ QStringLiteral("*.cpp") });
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString source = QString::fromUtf8(file.readAll());
        auto matches = function.globalMatch(source);
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            ++functions;
            EXPECT_TRUE(traced.match(match.captured(2)).hasMatch())
                << name.toStdString() << ": " << match.captured(1).toStdString();
        }
    }
    // Far fewer: the pattern no longer finds them.
    EXPECT_GT(functions, 250);
}

} // namespace
