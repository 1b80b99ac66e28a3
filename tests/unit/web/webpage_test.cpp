#include "webpage.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

QString read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// What `pattern` captures in a file, as paths seen from that file's folder.
QStringList namedIn(const QString& path, const QString& pattern)
{
    QStringList named;
    auto matches = QRegularExpression(pattern).globalMatch(read(path));
    while (matches.hasNext()) {
        const QString target = matches.next().captured(1);
        named.append(
            QDir::cleanPath(path.section(QLatin1Char('/'), 0, -2) + QLatin1Char('/') + target));
    }
    return named;
}

QStringList filesEndingIn(const QString& end)
{
    QStringList files;
    QDirIterator all(QStringLiteral(":/web"), QDir::Files, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        if (all.next().endsWith(end))
            files.append(all.filePath());
    }
    return files;
}

void expectReadable(const QStringList& files)
{
    ASSERT_FALSE(files.isEmpty());
    for (const QString& file : files)
        EXPECT_TRUE(QFile::exists(file)) << qPrintable(file);
}

struct WebPage : testing::Test
{
    WebPage() { initWebPage(); }
};

TEST_F(WebPage, IsReadableOnceRegisteredHoweverOften)
{
    initWebPage();
    EXPECT_TRUE(
        read(QStringLiteral(":/web/index.html")).contains(QLatin1String("<!doctype html>")));
}

TEST_F(WebPage, HoldsEveryFileThatItsFrontPageNames)
{
    expectReadable(
        namedIn(QStringLiteral(":/web/index.html"), QStringLiteral("(?:href|src)=\"([^\"]+)\"")));
}

TEST_F(WebPage, HoldsEveryModuleThatItsScriptsImport)
{
    QStringList modules;
    for (const QString& script : filesEndingIn(QStringLiteral(".js"))) {
        modules += namedIn(script, QStringLiteral("(?<![.\\w])from ?[\"']([^\"']+)[\"']"));
        EXPECT_FALSE(read(script).contains(QLatin1String("from\"preact\""))) << qPrintable(script);
    }
    expectReadable(modules);
}

TEST_F(WebPage, HoldsEveryPictureThatItsManifestNames)
{
    expectReadable(namedIn(
        QStringLiteral(":/web/manifest.webmanifest"), QStringLiteral("\"src\": \"([^\"]+)\"")));
}

TEST_F(WebPage, HoldsEveryFileThatItsStylesName)
{
    QStringList named;
    for (const QString& style : filesEndingIn(QStringLiteral(".css")))
        named += namedIn(style, QStringLiteral("url\\(\"([^\"]+)\"\\)"));
    expectReadable(named);
}

} // namespace
