// The bounds on decoded video in the media backend's GStreamer pipelines:
// the rule on bins built by hand, then the real pipeline of the app's player
// playing a demo clip, walked from its video decoder to the screen.
#include "player/zuvigstreamertuning.h"
#include "player/zuvimediamovieplayer.h"

#include <gst/gst.h>

#include <QFileInfo>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtTest>

#include <memory>

namespace {
guint uintProperty(GstElement *element, const char *name)
{
    guint value = 0;
    g_object_get(element, name, &value, nullptr);
    return value;
}

int intProperty(GstElement *element, const char *name)
{
    int value = 0;
    g_object_get(element, name, &value, nullptr);
    return value;
}

GstElement *addTo(GstElement *bin, const char *factory, const char *name)
{
    GstElement *element = gst_element_factory_make(factory, name);
    gst_bin_add(GST_BIN(bin), element);
    return element;
}

// The element a buffer reaches next from element's "src" pad, looking
// through the ghost pads at bin borders.
GstElement *nextElement(GstElement *element)
{
    GstPad *src = gst_element_get_static_pad(element, "src");
    if (!src)
        return nullptr;
    GstPad *pad = gst_pad_get_peer(src);
    gst_object_unref(src);
    while (pad) {
        GstPad *next = nullptr;
        if (GST_IS_GHOST_PAD(pad)) {
            // A bin's way in: go on at what it leads to inside.
            next = gst_ghost_pad_get_target(GST_GHOST_PAD(pad));
        } else if (GST_IS_PROXY_PAD(pad)) {
            // The inner side of a bin's way out: go on past the bin.
            GstProxyPad *ghost = gst_proxy_pad_get_internal(GST_PROXY_PAD(pad));
            next = ghost ? gst_pad_get_peer(GST_PAD(ghost)) : nullptr;
            if (ghost)
                gst_object_unref(ghost);
        } else {
            GstElement *owner = gst_pad_get_parent_element(pad);
            gst_object_unref(pad);
            return owner;
        }
        gst_object_unref(pad);
        pad = next;
    }
    return nullptr;
}

// Video decoders made in this process, kept from the moment they join a bin.
QList<GstElement *> videoDecoders;

gboolean recordDecoder(GSignalInvocationHint *, guint count, const GValue *values, gpointer)
{
    GstElement *element = count >= 2 ? GST_ELEMENT(g_value_get_object(&values[1])) : nullptr;
    GstElementFactory *factory = element ? gst_element_get_factory(element) : nullptr;
    const char *klass =
        factory ? gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS) : nullptr;
    if (klass && strstr(klass, "Decoder/Video"))
        videoDecoders.append(GST_ELEMENT(gst_object_ref(element)));
    return TRUE;
}
} // namespace

class TestZuviGStreamerTuning : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void boundsOnlyTheQueuesOfDecodedVideo();
    void videoDecodersWorkOnOneThread();
    void playingPipelineHoldsFewDecodedPictures();
};

void TestZuviGStreamerTuning::initTestCase()
{
    QVERIFY(ZuviGStreamerTuning::install());
    QVERIFY(ZuviGStreamerTuning::install()); // a second call is harmless
    g_signal_add_emission_hook(g_signal_lookup("element-added", GST_TYPE_BIN), 0, recordDecoder,
                               nullptr, nullptr);
}

void TestZuviGStreamerTuning::boundsOnlyTheQueuesOfDecodedVideo()
{
    GstElement *pipeline = gst_pipeline_new("playerPipeline");
    GstElement *video = addTo(pipeline, "bin", "videoOutput");
    GstElement *videoQueue = addTo(video, "queue", "videoQueue");
    GstElement *sinkBin = addTo(video, "bin", "videoSinkBin");
    GstElement *sinkQueue = addTo(sinkBin, "queue", "queue0");
    GstElement *audio = addTo(pipeline, "bin", "audioOutput");
    GstElement *audioQueue = addTo(audio, "queue", "audioQueue");
    GstElement *download = addTo(pipeline, "queue2", "videoDownload");
    GstElement *loose = gst_element_factory_make("queue", "videoLoose"); // never added

    QCOMPARE(uintProperty(videoQueue, "max-size-buffers"), 2u);
    QCOMPARE(uintProperty(sinkQueue, "max-size-buffers"), 2u);
    // Audio, compressed data (queue2) and anything outside a bin keep
    // GStreamer's own limits.
    const guint queueDefault = uintProperty(loose, "max-size-buffers");
    QVERIFY(queueDefault > 3u);
    QCOMPARE(uintProperty(audioQueue, "max-size-buffers"), queueDefault);
    GstElement *plainDownload = gst_element_factory_make("queue2", nullptr);
    QCOMPARE(uintProperty(download, "max-size-buffers"),
             uintProperty(plainDownload, "max-size-buffers"));
    for (GstElement *element : {pipeline, loose, plainDownload})
        gst_object_unref(element);
}

void TestZuviGStreamerTuning::videoDecodersWorkOnOneThread()
{
    GstElement *decoder = gst_element_factory_make("avdec_h264", nullptr);
    if (!decoder)
        QSKIP("no H.264 decoder installed");
    QCOMPARE(intProperty(decoder, "max-threads"), 0); // 0: one per core
    GstElement *bin = gst_bin_new("decodebin");
    gst_bin_add(GST_BIN(bin), decoder);
    QCOMPARE(intProperty(decoder, "max-threads"), 1);
    gst_object_unref(bin);
}

void TestZuviGStreamerTuning::playingPipelineHoldsFewDecodedPictures()
{
    const QString clip = QStringLiteral(ZUVI_MEDIA_DIR "/demo-a-720.mp4");
    if (!QFileInfo::exists(clip))
        QSKIP("the demo clips are not made yet (demo/make-media.sh)");
    for (GstElement *decoder : std::as_const(videoDecoders))
        gst_object_unref(decoder);
    videoDecoders.clear();

    QQmlEngine engine;
    QQuickWindow window;
    window.resize(640, 360);
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nimport QtMultimedia\nItem { width: 640; height: 360\n"
                      "  VideoOutput { objectName: \"videoOutput\"; anchors.fill: parent } }",
                      QUrl());
    std::unique_ptr<QQuickItem> view(qobject_cast<QQuickItem *>(component.create()));
    QVERIFY2(view, qPrintable(component.errorString()));
    view->setParentItem(window.contentItem());
    window.show();
    ZuviMediaMoviePlayer player;
    int pictures = 0;
    connect(&player, &ZuviMoviePlayer::videoFrameDidChange, this, [&pictures] { ++pictures; });
    player.setView(view.get());
    player.setContentURL(QUrl::fromLocalFile(clip));
    player.play();
    QTRY_VERIFY_WITH_TIMEOUT(pictures > 0, 10000);

    // From the decoder to the element that shows the pictures, every queue
    // holds at most three; the decoder itself keeps one thread's pictures.
    QCOMPARE(videoDecoders.size(), 1);
    GstElement *element = GST_ELEMENT(gst_object_ref(videoDecoders.first()));
    QCOMPARE(intProperty(element, "max-threads"), 1);
    QStringList path;
    for (GstElement *next = nextElement(element); next; next = nextElement(element)) {
        gst_object_unref(element);
        element = next;
        const QString kind = GST_OBJECT_NAME(gst_element_get_factory(element));
        path.append(kind);
        if (kind == QLatin1String("queue"))
            QVERIFY2(uintProperty(element, "max-size-buffers") <= 2u, GST_OBJECT_NAME(element));
    }
    // The walk ends at a sink: an element with no way out.
    QVERIFY(!gst_element_get_static_pad(element, "src"));
    gst_object_unref(element);
    QVERIFY2(path.count(QStringLiteral("queue")) >= 1, qPrintable(path.join(" > ")));
}

QTEST_MAIN(TestZuviGStreamerTuning)
#include "tst_zuvigstreamertuning.moc"
