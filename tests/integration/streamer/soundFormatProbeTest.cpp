#include "soundformatprobe.h"

#include <gtest/gtest.h>

namespace {

/// What passes in a decoder, made by hand.
class SoundFormatProbeTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }

    /// The decoder gets what is encoded so.
    void decode(const char* factory, const char* encoded)
    {
        decoder.reset(GST_ELEMENT(gst_object_ref_sink(gst_element_factory_make(factory, nullptr))));
        const player::GstPointer<GstPad> pad(gst_element_get_static_pad(decoder.get(), "sink"));
        gst_pad_set_active(pad.get(), TRUE);
        store(pad.get(), gst_event_new_stream_start("sound"));
        store(pad.get(), capsEvent(encoded));
        probe.take(decoder.get());
    }
    bool hearCaps(const char* caps) { return hear(capsEvent(caps)); }
    bool hearTags(const char* tags)
    {
        return hear(gst_event_new_tag(gst_tag_list_new_from_string(tags)));
    }
    player::SoundFormat format() const { return probe.format(); }

private:
    static GstEvent* capsEvent(const char* text)
    {
        GstCaps* caps = gst_caps_from_string(text);
        GstEvent* event = gst_event_new_caps(caps);
        gst_caps_unref(caps);
        return event;
    }
    static void store(GstPad* pad, GstEvent* event)
    {
        EXPECT_EQ(gst_pad_store_sticky_event(pad, event), GST_FLOW_OK);
        gst_event_unref(event);
    }
    bool hear(GstEvent* event)
    {
        const bool isNews = probe.heed(event);
        gst_event_unref(event);
        return isNews;
    }

    player::GstPointer<GstElement> decoder;
    player::SoundFormatProbe probe;
};

constexpr auto raw16 = "audio/x-raw, format=S16LE, rate=44100, channels=2";

TEST_F(SoundFormatProbeTest, namesTheSoundsOfMpegByVersionAndLayer)
{
    decode("flacdec", "audio/mpeg, mpegversion=1, layer=2");
    EXPECT_TRUE(hearCaps(raw16));
    EXPECT_EQ(format().codec, QStringLiteral("MP2"));
    EXPECT_TRUE(format().decoder.contains(QLatin1String("FLAC"))) << "whoever decodes it";
    decode("flacdec", "audio/mpeg, mpegversion=1, layer=3");
    hearCaps(raw16);
    EXPECT_EQ(format().codec, QStringLiteral("MP3"));
    decode("flacdec", "audio/mpeg, mpegversion=4");
    hearCaps(raw16);
    EXPECT_EQ(format().codec, QStringLiteral("AAC"));
    EXPECT_FALSE(format().lossless);
    EXPECT_EQ(format().bitDepth, 0);
}

TEST_F(SoundFormatProbeTest, takesTheDepthFromTheContainerThatKnowsBetterThanTheDecoder)
{
    decode("flacdec", "audio/x-alac, samplesize=24");
    hearCaps("audio/x-raw, format=S32LE, rate=96000, channels=1");
    EXPECT_EQ(format().codec, QStringLiteral("ALAC"));
    EXPECT_EQ(format().bitDepth, 24);
    EXPECT_EQ(format().sampleRate, 96000);
    EXPECT_EQ(format().channels, 1);
    decode("flacdec", "audio/x-flac");
    hearCaps("audio/x-raw, format=S24_32LE, rate=96000, channels=1");
    EXPECT_EQ(format().bitDepth, 24) << "which take the room of 32";
}

TEST_F(SoundFormatProbeTest, aMeanBitRateThatTremblesIsNoNews)
{
    decode("flacdec", "audio/mpeg, mpegversion=1, layer=3");
    hearCaps(raw16);
    EXPECT_TRUE(hearTags("taglist, bitrate=(uint)128000"));
    EXPECT_FALSE(hearTags("taglist, bitrate=(uint)131000"));
    EXPECT_EQ(format().bitRate, 128000);
    EXPECT_TRUE(hearTags("taglist, bitrate=(uint)160000"));
    EXPECT_EQ(format().bitRate, 160000);
    EXPECT_TRUE(hearTags("taglist, nominal-bitrate=(uint)256000, bitrate=(uint)170000"));
    EXPECT_EQ(format().bitRate, 256000) << "what the encoder was told counts";
}

TEST_F(SoundFormatProbeTest, losslessSoundHasNoBitRate)
{
    EXPECT_TRUE(hearTags("taglist, bitrate=(uint)900000"));
    decode("flacdec", "audio/x-flac");
    hearCaps(raw16);
    EXPECT_EQ(format().bitRate, 0);
    EXPECT_FALSE(hearTags("taglist, bitrate=(uint)900000"));
    EXPECT_EQ(format().bitRate, 0);
}

TEST_F(SoundFormatProbeTest, theOutermostContainerIsToldFirstAndStays)
{
    EXPECT_TRUE(hearTags("taglist, container-format=(string)Matroska"));
    EXPECT_FALSE(hearTags("taglist, container-format=(string)Ogg"));
    EXPECT_EQ(format().container, QStringLiteral("Matroska"));
}

TEST_F(SoundFormatProbeTest, whatItHasNoNameForIsCalledByWhatTheStreamSays)
{
    decode("flacdec", "audio/x-unheard-of");
    hearCaps(raw16);
    EXPECT_EQ(format().codec, QString());
    EXPECT_TRUE(hearTags("taglist, audio-codec=(string)\"Unheard of\""));
    EXPECT_EQ(format().codec, QStringLiteral("Unheard of"));
}

TEST_F(SoundFormatProbeTest, soundThatNeedsNoDecoderIsPcm)
{
    decode("fakesink", "audio/x-flac");
    hearCaps(raw16);
    EXPECT_EQ(format().codec, QStringLiteral("PCM"));
    EXPECT_EQ(format().decoder, QString());
    EXPECT_TRUE(format().lossless);
    EXPECT_EQ(format().bitDepth, 16);
}

} // namespace
