#include "cmplugin.h"
#include "cmroot.h"
#include "printers.h"
#include "replies.h"
#include "tavupaths.h"
#include "testhost.h"

#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <memory>

namespace {

TEST(AmazonMusicModule, ExportsItsEntryAndNothingElse)
{
    QProcess nm;
    nm.start(QStringLiteral("nm"),
        { QStringLiteral("-D"), QStringLiteral("--defined-only"), QStringLiteral("--format=posix"),
            QStringLiteral(AMAZON_MUSIC_MODULE) });
    ASSERT_TRUE(nm.waitForFinished());
    QStringList symbols;
    for (const QByteArray& line : nm.readAllStandardOutput().split('\n')) {
        if (!line.isEmpty())
            symbols += QString::fromLatin1(line.left(line.indexOf(' ')));
    }
    EXPECT_EQ(symbols, QStringList{ QStringLiteral("worker_create") });
}

TEST(AmazonMusicModule, LinksTheHostTheCoreOfQtAndTheLogAlone)
{
    QProcess readelf;
    readelf.start(QStringLiteral("readelf"),
        { QStringLiteral("-d"), QStringLiteral("-W"), QStringLiteral(AMAZON_MUSIC_MODULE) });
    ASSERT_TRUE(readelf.waitForFinished());
    const QRegularExpression needed(QStringLiteral("\\(NEEDED\\).*\\[(lib[^.\\]]+)"));
    QStringList libraries;
    auto found = needed.globalMatch(QString::fromLatin1(readelf.readAllStandardOutput()));
    while (found.hasNext())
        libraries += found.next().captured(1);
    // What the compiler itself asks for, with and without sanitizers.
    for (const char* own : { "libstdc++", "libc++", "libm", "libgcc_s", "libc", "libpthread",
             "libdl", "libasan", "libubsan", "libtsan" })
        libraries.removeAll(QString::fromLatin1(own));
    for (const char* allowed : { "libtavu_api", "libtavu_api_play", "libtavu_http_client",
             "libtavu_thrift_api", "liboauth2UiHelper", "libQt5Core", "liblog4cplus-2" })
        EXPECT_EQ(libraries.removeAll(QString::fromLatin1(allowed)), 1) << allowed;
    EXPECT_TRUE(libraries.isEmpty()) << libraries.join(QStringLiteral(", ")).toStdString();
}

TEST(AmazonMusicModule, MakesAWorkerThatAnswers)
{
    const TestHost host;
    void* module = dlopen(AMAZON_MUSIC_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    const auto create = reinterpret_cast<CMWorkerCreate*>(dlsym(module, CMWorkerCreateName));
    ASSERT_NE(create, nullptr) << dlerror();

    const std::unique_ptr<CMAbstractWorker> worker(create(nullptr, QVariantHash()));
    const CMGetRowsRequest request(
        TavuAmazonMusicBrowsePath(), 0, 9, { TavuRoles::Title(), TavuRoles::Type() });
    worker->getRowsRequest(request);
    EXPECT_FALSE(expectValue(request.reply()).rows().isEmpty());
}

} // namespace
