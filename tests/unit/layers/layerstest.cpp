#include "printers.h"

#include <gtest/gtest.h>

#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace {

using Names = std::vector<const char*>;

/// What one binary may link.
struct Layer
{
    const char* target;
    Names ours;
    Names foreign; // How the names of libraries begin.
};

const Names qtAndLog{ "libQt5Core.so", "liblog4cplus" };
const Names framework{ "tavu_api", "tavu_http_client", "tavu_thrift_api", "tavu_api_play",
    "oauth2UiHelper" };

Names with(Names names, const Names& more)
{
    names.insert(names.end(), more.begin(), more.end());
    return names;
}

const std::vector<Layer> layers{
    { "tavu_api", {}, with(qtAndLog, { "libsimdjson" }) },
    { "tavu_http_client", { "tavu_api" }, with(qtAndLog, { "libcurl" }) },
    { "tavu_thrift_api", { "tavu_api" }, qtAndLog },
    { "tavu_api_play", { "tavu_api" }, qtAndLog },
    { "oauth2UiHelper", { "tavu_api" }, qtAndLog },
    { "cb_amazonMusic", framework, qtAndLog },
    { "tavu-ctl", { "tavu_api", "tavu_http_client" }, qtAndLog },
    { "amazon-music-emulator", { "tavu_api", "tavu_thrift_api" },
        with(qtAndLog,
            { "libQt5Network.so", "libtag", "libgst", "libglib", "libgobject", "libcrypto",
                "libssl", "libz" }) },
    { "tavu-player", framework,
        with(qtAndLog,
            { "libQt5Network.so", "libQt5DBus.so", "libgst", "libglib", "libgobject", "libcurl",
                "libcrypto", "libqrencode" }) },
};

/// Every binary that is built, by its target.
QMap<QString, QString> files()
{
    QMap<QString, QString> all;
    for (const QString& layer : QStringLiteral(LAYERS).split(QLatin1Char('|')))
        all.insert(layer.section(QLatin1Char('='), 0, 0), layer.section(QLatin1Char('='), 1));
    return all;
}

QString file(const char* target)
{
    return files().value(QString::fromLatin1(target));
}

QStringList output(const char* program, const QStringList& arguments)
{
    QProcess process;
    process.start(QString::fromLatin1(program), arguments);
    EXPECT_TRUE(process.waitForFinished(60000)) << program;
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'));
}

/// The libraries that a binary names, those of the language and the sanitizers left out.
QStringList linked(const QString& file)
{
    static const QRegularExpression needed(QStringLiteral("\\(NEEDED\\).*\\[(.*)\\]"));
    static const QRegularExpression runtime(
        QStringLiteral("^(libstdc\\+\\+|libm|libgcc_s|libc|libpthread|libdl|librt|ld-linux"
                       "|lib[aut]b?san)[.-]"));
    QStringList names;
    for (const QString& line : output("readelf", { QStringLiteral("-d"), file })) {
        const QString name = needed.match(line).captured(1);
        if (!name.isEmpty() && !runtime.match(name).hasMatch())
            names.append(name);
    }
    return names;
}

bool isAllowed(const QString& library, const Layer& layer)
{
    const bool isForeign = std::any_of(layer.foreign.begin(), layer.foreign.end(),
        [&](const char* start) { return library.startsWith(QLatin1String(start)); });
    return isForeign || std::any_of(layer.ours.begin(), layer.ours.end(), [&](const char* target) {
        return library == QStringLiteral("lib%1.so").arg(QLatin1String(target));
    });
}

/// The names in the symbol table of `file` that begin with `start`.
QStringList symbols(const QString& file, const QString& start)
{
    QStringList found;
    for (const QString& line :
        output("nm", { QStringLiteral("-C"), QStringLiteral("--defined-only"), file })) {
        const QString name = line.section(QLatin1Char(' '), 2);
        if (name.startsWith(start))
            found.append(name);
    }
    return found;
}

TEST(Layers, are_all_built)
{
    for (const Layer& layer : layers)
        EXPECT_FALSE(file(layer.target).isEmpty()) << layer.target;
}

TEST(Layers, link_only_what_stands_below_them)
{
    for (const Layer& layer : layers) {
        const QStringList libraries = linked(file(layer.target));
        EXPECT_TRUE(libraries.contains(QStringLiteral("libQt5Core.so.5"))) << layer.target;
        for (const QString& library : libraries)
            EXPECT_TRUE(isAllowed(library, layer))
                << layer.target << " links " << library.toStdString();
    }
}

TEST(Layers, the_programs_hold_nothing_of_the_plug_in)
{
    const QString connection = QStringLiteral("AmazonMusicConnect::");
    ASSERT_FALSE(symbols(file("cb_amazonMusic"), connection).isEmpty());
    for (const char* program : { "tavu-player", "tavu-ctl", "amazon-music-emulator" })
        EXPECT_EQ(symbols(file(program), connection), QStringList()) << program;
}

TEST(Layers, the_plug_in_exports_its_entry_and_nothing_else)
{
    QStringList exported;
    for (const QString& line : output("nm",
             { QStringLiteral("-D"), QStringLiteral("--defined-only"), file("cb_amazonMusic") })) {
        if (!line.isEmpty())
            exported.append(line.section(QLatin1Char(' '), 2));
    }
    EXPECT_EQ(exported, QStringList{ QStringLiteral("worker_create") });
}

TEST(Layers, the_plug_in_is_never_unloaded)
{
    const QString dynamic =
        output("readelf", { QStringLiteral("-d"), file("cb_amazonMusic") }).join(QString());
    EXPECT_TRUE(dynamic.contains(QStringLiteral("NODELETE")));
}

} // namespace
