#include "amazonMusicRedact.h"

#include "amazonMusicTrack.h"
#include "printers.h"
#include "serviceDocuments.h"

#include <gtest/gtest.h>

namespace {

TavuAmazonMusicTrackInstance secretInstance()
{
    serviceDocuments::Track track{ QStringLiteral("1") };
    track.uri = QStringLiteral("https://cdn.example/1.flac?signature=hidden");
    track.keyHeaders = { { QStringLiteral("X-Key"), QStringLiteral("hidden") } };
    TavuAmazonMusicTrackInstance instance(track.instance());
    instance.setTrackDefinitionInst(track.definition());
    return instance;
}

TEST(AmazonMusicRedact, AnInstanceShowsNoKeysAndNoSignature)
{
    const QString shown = amazonMusicRedact::instance(secretInstance()).toJsonString();
    EXPECT_FALSE(shown.contains(QStringLiteral("hidden"))) << shown.toStdString();
    EXPECT_TRUE(shown.contains(QStringLiteral("https://cdn.example/1.flac")));
    EXPECT_TRUE(shown.contains(QStringLiteral("Title 1")));
}

TEST(AmazonMusicRedact, MediaDataShowsNoKeysNoTokenAndNoSignature)
{
    AmazonMusicTrack track(0, 0, secretInstance());
    track.setToken(QStringLiteral("hidden"));
    const QString shown =
        amazonMusicRedact::mediaData(track.tavuRoles().mediaData()).toJsonString();
    EXPECT_FALSE(shown.contains(QStringLiteral("hidden"))) << shown.toStdString();
    EXPECT_TRUE(shown.contains(QStringLiteral("https://cdn.example/1.flac")));
}

} // namespace
