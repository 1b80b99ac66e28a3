#include "gstruntime.h"

#include <gst/gst.h>

#include <mutex>

namespace player {

namespace {

/// The decoders of libav share one library of tens of megabytes. They serve where nothing leaner
/// does, and so these come first.
void preferLeanDecoders()
{
    for (const char* name : { "flacdec", "mpg123audiodec", "opusdec", "vorbisdec" }) {
        GstPluginFeature* feature = gst_registry_lookup_feature(gst_registry_get(), name);
        if (!feature)
            continue;
        gst_plugin_feature_set_rank(feature, GST_RANK_PRIMARY + 1);
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
