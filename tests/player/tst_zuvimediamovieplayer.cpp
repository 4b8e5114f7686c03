// The app's movie player on real media: the demo clips made by
// demo/make-media.sh, decoded by the platform's media backend into a
// VideoOutput in an offscreen window.
#include "player/zuvimediamovieplayer.h"

#include <QFileInfo>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtTest>

#include <memory>

namespace {
QUrl clipURL(const QString &name)
{
    return QUrl::fromLocalFile(QStringLiteral(ZUVI_MEDIA_DIR "/") + name);
}
} // namespace

class TestZuviMediaMoviePlayer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void clockMovesWithThePictures();
    void seekToTheEndFinishesPlayback();
    void droppingTheMediaLeavesNothingPlaying();
    void newMediaStartsAtTheInitialTime();

private:
    void startPlaying(const QString &clip);

    QQmlEngine engine;
    std::unique_ptr<QQuickWindow> window;
    std::unique_ptr<QQuickItem> view;
    std::unique_ptr<ZuviMediaMoviePlayer> player;
    int frames = 0;
    int clockChanges = 0;
    // Clock changes made in the same turn of the event loop as a picture,
    // and the others.
    int changesWithPicture = 0;
    int changesAlone = 0;
    bool pictureTurn = false;
    QList<int> finishes;
};

void TestZuviMediaMoviePlayer::init()
{
    if (!QFileInfo::exists(clipURL("demo-b-360.mp4").toLocalFile()))
        QSKIP("the demo clips are not made yet (demo/make-media.sh)");
    window = std::make_unique<QQuickWindow>();
    window->resize(640, 360);
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nimport QtMultimedia\n"
                      "Item { width: 640; height: 360\n"
                      "  VideoOutput { objectName: \"videoOutput\"; anchors.fill: parent } }",
                      QUrl());
    view.reset(qobject_cast<QQuickItem *>(component.create()));
    QVERIFY2(view, qPrintable(component.errorString()));
    view->setParentItem(window->contentItem());
    window->show();
    player = std::make_unique<ZuviMediaMoviePlayer>();
    frames = 0;
    clockChanges = 0;
    finishes.clear();
    changesWithPicture = 0;
    changesAlone = 0;
    connect(player.get(), &ZuviMoviePlayer::videoFrameDidChange, this, [this] {
        ++frames;
        // The turn ends when the event loop gets to this queued call.
        pictureTurn = true;
        QMetaObject::invokeMethod(
            this, [this] { pictureTurn = false; }, Qt::QueuedConnection);
    });
    connect(player.get(), &ZuviMoviePlayer::timeChanged, this, [this] {
        ++clockChanges;
        ++(pictureTurn ? changesWithPicture : changesAlone);
    });
    connect(player.get(), &ZuviMoviePlayer::playbackDidFinish, this,
            [this](int reason) { finishes.append(reason); });
}

void TestZuviMediaMoviePlayer::cleanup()
{
    player.reset();
    view.reset();
    window.reset();
}

void TestZuviMediaMoviePlayer::startPlaying(const QString &clip)
{
    player->setView(view.get());
    player->setContentURL(clipURL(clip));
    player->play();
    QTRY_VERIFY_WITH_TIMEOUT(player->currentPlaybackTime() > 0.3, 10000);
}

void TestZuviMediaMoviePlayer::clockMovesWithThePictures()
{
    startPlaying(QStringLiteral("demo-a-360.mp4"));
    QCOMPARE(player->playbackState(), ZuviMoviePlayer::PlaybackPlaying);
    const int framesBefore = frames;
    changesWithPicture = 0;
    changesAlone = 0;
    QTRY_VERIFY_WITH_TIMEOUT(player->currentPlaybackTime() > 1.5, 10000);
    // Pictures are reported as they come (the clip has 25 a second), and
    // the clock's own reports wait for the next picture, so it moves in the
    // same turn as a picture; alone only when pictures lag (a busy machine).
    const int pictures = frames - framesBefore;
    QVERIFY2(pictures >= 10, qPrintable(QString::number(pictures)));
    QVERIFY2(changesWithPicture > 0 && changesAlone < changesWithPicture,
             qPrintable(QStringLiteral("%1 clock changes with a picture, %2 alone")
                            .arg(changesWithPicture)
                            .arg(changesAlone)));
    // Paused, the clock is reported at once again: a seek moves it without
    // waiting for a picture.
    player->pause();
    QTRY_COMPARE(player->playbackState(), ZuviMoviePlayer::PlaybackPaused);
    const int pausedChanges = clockChanges;
    player->seek(0.5);
    QTRY_VERIFY(clockChanges > pausedChanges);
    QTRY_VERIFY(qAbs(player->currentPlaybackTime() - 0.5) < 0.1);
}

void TestZuviMediaMoviePlayer::seekToTheEndFinishesPlayback()
{
    startPlaying(QStringLiteral("demo-b-360.mp4"));
    QTRY_VERIFY(player->duration() > 11);
    // Where the seek bar's far end or repeated skips forward land. The end
    // is reported at once, without asking the media backend to go there
    // (streamed, it would stall there).
    player->seek(player->duration());
    QCOMPARE(finishes, QList<int>{ZuviMoviePlayer::FinishReasonPlaybackEnded});
    QTRY_VERIFY(!player->isPlaying());
    // Playing again starts over.
    player->play();
    QTRY_VERIFY(player->isPlaying());
    QTRY_VERIFY_WITH_TIMEOUT(player->currentPlaybackTime() > 0.2, 5000);
    QVERIFY(player->currentPlaybackTime() < 5);
}

void TestZuviMediaMoviePlayer::droppingTheMediaLeavesNothingPlaying()
{
    startPlaying(QStringLiteral("demo-b-360.mp4"));
    player->setContentURL(QUrl());
    QVERIFY(player->contentURL().isEmpty());
    QVERIFY(qIsNaN(player->currentPlaybackTime()));
    QTRY_COMPARE(player->playbackState(), ZuviMoviePlayer::PlaybackStopped);
    QVERIFY(finishes.isEmpty());
}

// Another quality of the same movie goes on from where the last one was:
// the same player takes the new address with a position to start at.
void TestZuviMediaMoviePlayer::newMediaStartsAtTheInitialTime()
{
    startPlaying(QStringLiteral("demo-b-360.mp4"));
    player->pause();
    player->setInitialPlaybackTime(6.0);
    player->setContentURL(clipURL(QStringLiteral("demo-b-480.mp4")));
    player->play();
    const int framesBefore = frames;
    QTRY_VERIFY_WITH_TIMEOUT(frames > framesBefore + 3, 10000);
    const double time = player->currentPlaybackTime();
    QVERIFY2(time >= 5.9 && time < 9, qPrintable(QString::number(time)));
}

QTEST_MAIN(TestZuviMediaMoviePlayer)
#include "tst_zuvimediamovieplayer.moc"
