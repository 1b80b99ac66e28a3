#include "emulator/main/commandline.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

using namespace emulator;

namespace {

CommandLine parse(const QStringList& arguments)
{
    return parseCommandLine(QStringList{ QStringLiteral("amazon-music-emulator") } + arguments);
}

QStringList list(std::initializer_list<const char*> arguments)
{
    QStringList made;
    for (const char* argument : arguments)
        made += QString::fromUtf8(argument);
    return made;
}

std::string refusal(std::initializer_list<const char*> arguments)
{
    const CommandLine line = parse(list(arguments));
    EXPECT_FALSE(line.settings.has_value());
    EXPECT_EQ(line.exitCode, 2);
    return line.text.toStdString();
}

} // namespace

TEST(CommandLine, WithoutArgumentsServesSampleAlbumsOnFreeLoopbackPorts)
{
    const CommandLine line = parse({});
    ASSERT_TRUE(line.settings.has_value());
    EXPECT_TRUE(line.settings->musicFolder.isEmpty());
    EXPECT_TRUE(line.settings->address.isLoopback());
    EXPECT_EQ(line.settings->httpPort, 0);
    EXPECT_TRUE(line.settings->stateFolder.endsWith(QLatin1String("/amazon-music-emulator")));
    EXPECT_TRUE(line.settings->tokenNeeded);
    EXPECT_EQ(line.settings->hosts.first(), QLatin1String("music.localhost"));
}

TEST(CommandLine, ReadsEveryOption)
{
    QTemporaryDir music;
    const CommandLine line =
        parse(list({ "--state", "/s", "--samples", "/m", "--listen", "127.0.0.2", "--http-port",
                  "81", "--tls-port", "82", "--host", "a.test", "--host", "b.test", "--ca-file",
                  "/ca", "--ready-file", "/r", "--media-tls", "--hostile-ports", "--no-login",
                  "--seed", "7", "--page-size", "9", "--station-length", "3", "--key-headers-every",
                  "0", "--unrated-every", "2", "--expires-after", "5", "--client-id", "me",
                  "--client-secret", "", "--poll-interval", "1", "--code-lifetime", "2",
                  "--token-lifetime", "3", "--device-grant", "urn", "--auto-approve",
                  "--strict-refresh", "--fault", "effect=hang", "--fault", "effect=status" })
            + QStringList{ music.path() });
    ASSERT_TRUE(line.settings.has_value()) << line.text.toStdString();
    const Settings& settings = *line.settings;
    EXPECT_EQ(settings.musicFolder, music.path());
    EXPECT_EQ(settings.stateFolder, QLatin1String("/s"));
    EXPECT_EQ(settings.samplesFolder, QLatin1String("/m"));
    EXPECT_EQ(settings.address.toString(), QLatin1String("127.0.0.2"));
    EXPECT_EQ(settings.httpPort, 81);
    EXPECT_EQ(settings.tlsPort, 82);
    EXPECT_EQ(settings.hosts, list({ "a.test", "b.test" }));
    EXPECT_EQ(settings.caFile, QLatin1String("/ca"));
    EXPECT_EQ(line.readyFile, QLatin1String("/r"));
    EXPECT_TRUE(settings.mediaOverTls);
    EXPECT_TRUE(settings.hostilePorts);
    EXPECT_FALSE(settings.tokenNeeded);
    EXPECT_FALSE(settings.oauth2.refreshGrace);
    EXPECT_EQ(settings.seed, 7u);
    EXPECT_EQ(settings.documents.pageSize, 9);
    EXPECT_EQ(settings.documents.stationLength, 3);
    EXPECT_EQ(settings.documents.keyHeadersEvery, 0);
    EXPECT_EQ(settings.documents.unratedEvery, 2);
    EXPECT_EQ(settings.documents.expiresAfterMs, 5000);
    EXPECT_EQ(settings.oauth2.clientId, QLatin1String("me"));
    EXPECT_EQ(settings.oauth2.clientSecret, QString());
    EXPECT_EQ(settings.oauth2.pollIntervalS, 1);
    EXPECT_EQ(settings.oauth2.codeLifetimeS, 2);
    EXPECT_EQ(settings.oauth2.tokenLifetimeS, 3);
    EXPECT_EQ(
        settings.oauth2.deviceGrants, list({ "urn:ietf:params:oauth:grant-type:device_code" }));
    EXPECT_TRUE(settings.oauth2.autoApprove);
    EXPECT_EQ(settings.faults.size(), 2u);
}

TEST(CommandLine, SaysWhatIsWrong)
{
    EXPECT_EQ(refusal({ "/no/such/folder" }),
        "There is no folder \"/no/such/folder\". Give the folder that holds your music, or none "
        "for "
        "the sample albums.");
    EXPECT_NE(
        refusal({ "/etc/passwd" }).find("\"/etc/passwd\" is not a folder."), std::string::npos);
    for (const char* host : { "", "a b", "music.test:443", "-a", "http://music.test" })
        EXPECT_NE(refusal({ "--host", host }).find("--host takes a host name"), std::string::npos);
    EXPECT_EQ(refusal({ "--host" }), "Missing value after '--host'. Try --help.");
    EXPECT_NE(refusal({ "--page-size", "0" }).find("--page-size takes a number from 1"),
        std::string::npos);
    EXPECT_NE(refusal({ "--http-port", "65536" }).find("--http-port"), std::string::npos);
    EXPECT_NE(refusal({ "--listen", "here" }).find("--listen"), std::string::npos);
    EXPECT_NE(refusal({ "--device-grant", "x" }).find("--device-grant"), std::string::npos);
    EXPECT_NE(refusal({ "--fault", "effect=wat" }).find("there is no effect"), std::string::npos);
    EXPECT_NE(refusal({ "--wat" }).find("Try --help"), std::string::npos);
    EXPECT_NE(refusal({ "/", "/" }).find("one too many"), std::string::npos);
}

TEST(CommandLine, HelpTellsEveryOption)
{
    const CommandLine line = parse(list({ "--help" }));
    EXPECT_FALSE(line.settings.has_value());
    EXPECT_EQ(line.exitCode, 0);
    for (const char* option : { "--state", "--fault", "--ready-file", "--version", "folder" })
        EXPECT_TRUE(line.text.contains(QLatin1String(option))) << option;
    EXPECT_EQ(parse(list({ "--version" })).exitCode, 0);
}
