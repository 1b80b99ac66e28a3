#include "gstruntime.h"

#include <gst/gst.h>

#include <mutex>

namespace player {

namespace {

/// The decoders of libav share one library of tens of megabytes. They serve where nothing leaner
/// does: the same rank would leave the choice to their names.
void preferLeanDecoders()
{
    for (const char* name :
        { "avdec_mp3", "avdec_mp3float", "avdec_flac", "avdec_opus", "avdec_vorbis" }) {
        GstPluginFeature* feature = gst_registry_lookup_feature(gst_registry_get(), name);
        if (!feature)
            continue;
        gst_plugin_feature_set_rank(feature, GST_RANK_MARGINAL);
        gst_object_unref(feature);
    }
}

} // namespace

void initGStreamer()
{
    static std::once_flag once;
    std::call_once(once, [] {
        gst_init(nullptr, nullptr);
        preferLeanDecoders();
    });
}

} // namespace player
