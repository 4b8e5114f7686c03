#include "zuvigstreamertuning.h"

#include <gst/gst.h>

#include <cstring>
#include <mutex>

namespace {
// Whether a plain queue carries decoded video to the screen: the media
// backend names the video output's elements and bins "video…" ("videoQueue"
// in "videoOutput", a queue inside "videoSinkBin"), its audio ones "audio…".
bool isDecodedVideoQueue(const char *elementName, const char *parentName)
{
    // A bin still being set up may have no name yet.
    return (elementName && g_str_has_prefix(elementName, "video")) ||
           (parentName && g_str_has_prefix(parentName, "video"));
}

bool isVideoDecoder(GstElementFactory *factory)
{
    const char *klass = gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS);
    return klass && std::strstr(klass, "Decoder") && std::strstr(klass, "Video");
}

bool hasIntProperty(GstElement *element, const char *name)
{
    GParamSpec *property = g_object_class_find_property(G_OBJECT_GET_CLASS(element), name);
    return property && property->value_type == G_TYPE_INT;
}

void trim(GstElement *bin, GstElement *element)
{
    GstElementFactory *factory = gst_element_get_factory(element);
    if (!factory)
        return;
    const char *kind = GST_OBJECT_NAME(factory);
    if (std::strcmp(kind, "queue") == 0) {
        if (isDecodedVideoQueue(GST_OBJECT_NAME(element), GST_OBJECT_NAME(bin)))
            g_object_set(element, "max-size-buffers", ZuviGStreamerTuning::kVideoQueueBuffers,
                         nullptr);
        return;
    }
    // The decoders' thread count is read when they open their codec, after
    // they join the pipeline, so setting it here takes effect.
    if (isVideoDecoder(factory) && hasIntProperty(element, "max-threads"))
        g_object_set(element, "max-threads", ZuviGStreamerTuning::kVideoDecoderThreads, nullptr);
}

// "element-added" is emitted by the direct parent of each new element, on the
// thread that adds it (streaming threads for what decodebin plugs in).
gboolean elementAdded(GSignalInvocationHint *, guint count, const GValue *values, gpointer)
{
    if (count >= 2)
        trim(GST_ELEMENT(g_value_get_object(&values[0])),
             GST_ELEMENT(g_value_get_object(&values[1])));
    return TRUE; // stay installed
}
} // namespace

bool ZuviGStreamerTuning::install()
{
    static std::once_flag once;
    static bool installed = false;
    std::call_once(once, [] {
        if (!gst_init_check(nullptr, nullptr, nullptr))
            return;
        const guint signal = g_signal_lookup("element-added", GST_TYPE_BIN);
        installed = signal && g_signal_add_emission_hook(signal, 0, elementAdded, nullptr, nullptr);
    });
    return installed;
}
