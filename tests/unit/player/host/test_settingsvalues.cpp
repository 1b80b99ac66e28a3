#include "settingsvalues.h"

#include "cmroot.h"
#include "httpclient.h"
#include "tavupaths.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using player::pluginSettings;
using player::publishSettings;
using player::Settings;

namespace {

Settings complete()
{
    Settings settings;
    for (const char* assignment : { "service.base-url=https://music.localhost/",
             "service.token-url=https://a.localhost/token",
             "service.device-code-url=https://a.localhost/device", "service.client-id=id",
             "service.domain-suffix=.localhost", "service.max-queue-size=7" })
        EXPECT_TRUE(settings.apply(QString::fromLatin1(assignment)));
    return settings;
}

QString stringAt(const CMPath& path)
{
    return TavuValue(CMRoot()->getValue(path).toHash()).string();
}

TEST(SettingsValues, are_published_where_the_plugin_reads_them)
{
    ASSERT_EQ(publishSettings(complete()), QString());
    EXPECT_EQ(stringAt(TavuAmazonMusicBaseUrlPath()), QStringLiteral("https://music.localhost/"));
    EXPECT_EQ(stringAt(TavuAmazonMusicClientIdPath()), QStringLiteral("id"));
    EXPECT_EQ(stringAt(TavuAmazonMusicDomainSuffixPath()), QStringLiteral(".localhost"));
    EXPECT_EQ(TavuValue(CMRoot()->getValue(TavuAmazonMusicMaxQueueSizePath()).toHash()).i32(), 7);
    EXPECT_EQ(HttpClientConfig::shared().baseHost, QByteArray("music.localhost"));
}

TEST(SettingsValues, name_what_is_not_set)
{
    Settings settings;
    EXPECT_TRUE(
        publishSettings(settings).startsWith(QStringLiteral("service.base-url is not set.")));
    settings = complete();
    ASSERT_TRUE(settings.apply(QStringLiteral("service.client-id=")));
    EXPECT_TRUE(
        publishSettings(settings).startsWith(QStringLiteral("service.client-id is not set.")));
}

TEST(SettingsValues, ask_nothing_of_the_service_for_another_plugin_unless_they_name_some)
{
    Settings settings;
    ASSERT_TRUE(settings.apply(QStringLiteral("player.plugin=/somewhere/radio.so")));
    EXPECT_EQ(publishSettings(settings), QString());
    ASSERT_TRUE(settings.apply(QStringLiteral("service.client-id=id")));
    EXPECT_TRUE(
        publishSettings(settings).startsWith(QStringLiteral("service.base-url is not set.")));
}

TEST(SettingsValues, tell_the_plugin_what_is_meant_for_it)
{
    Settings settings;
    EXPECT_EQ(pluginSettings(settings), QVariantHash());
    ASSERT_TRUE(settings.apply(QStringLiteral("player.plugin-settings=list=/my%20music/a.m3u "
                                              "prefix=/Radio/ rule=a=b%25 bare")));
    const QVariantHash wanted{ { QStringLiteral("list"), QStringLiteral("/my music/a.m3u") },
        { QStringLiteral("prefix"), QStringLiteral("/Radio/") },
        { QStringLiteral("rule"), QStringLiteral("a=b%") }, { QStringLiteral("bare"), QString() } };
    EXPECT_EQ(pluginSettings(settings), wanted);
}

TEST(SettingsValues, want_a_base_url_that_ends_in_a_slash)
{
    Settings settings = complete();
    ASSERT_TRUE(settings.apply(QStringLiteral("service.base-url=https://music.localhost")));
    EXPECT_EQ(publishSettings(settings), QStringLiteral("service.base-url must end in \"/\"."));
}

TEST(SettingsValues, read_the_secret_only_from_a_file_that_others_cannot_read)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("secret"));
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("sesame\n");
    file.close();
    Settings settings = complete();
    ASSERT_TRUE(settings.apply(QStringLiteral("service.client-secret-file=") + name));
    file.setPermissions(QFile::ReadOwner | QFile::ReadOther);
    EXPECT_TRUE(publishSettings(settings).contains(QStringLiteral("can be read by others")));
    file.setPermissions(QFile::ReadOwner);
    EXPECT_EQ(publishSettings(settings), QString());
    EXPECT_EQ(stringAt(TavuAmazonMusicClientSecretPath()), QStringLiteral("sesame"));
}

TEST(SettingsValues, want_one_line_of_text_as_the_secret)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("secret"));
    Settings settings = complete();
    ASSERT_TRUE(settings.apply(QStringLiteral("service.client-secret-file=") + name));
    EXPECT_EQ(publishSettings(settings),
        QStringLiteral("service.client-secret-file: %1 cannot be read (No such file or directory). "
                       "Put the client secret there, with mode 0600, or name another file.")
            .arg(name));
    for (const QByteArray& content : { QByteArray(), QByteArray(" \n"), QByteArray("a\nb"),
             QByteArray("\x7f"
                        "ELF"),
             QByteArray(5000, 'x') }) {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        file.write(content);
        file.close();
        EXPECT_TRUE(publishSettings(settings).contains(QStringLiteral("holds no client secret")));
    }
}

TEST(SettingsValues, name_a_ca_file_that_is_none_and_what_to_do)
{
    const QString remedy = QStringLiteral(
        "Name a PEM file with the certificates of the authorities that the service's comes from, "
        "or leave service.ca-file empty to trust those of this system.");
    Settings settings = complete();
    ASSERT_TRUE(settings.apply(QStringLiteral("service.ca-file=/nowhere/ca.pem")));
    EXPECT_EQ(publishSettings(settings),
        QStringLiteral("service.ca-file: /nowhere/ca.pem cannot be read (No such file or "
                       "directory). ")
            + remedy);
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("ca.pem")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n");
    file.close();
    ASSERT_TRUE(settings.apply(QStringLiteral("service.ca-file=") + file.fileName()));
    EXPECT_EQ(publishSettings(settings),
        QStringLiteral("service.ca-file: %1 holds no certificate. ").arg(file.fileName()) + remedy);
}

} // namespace
