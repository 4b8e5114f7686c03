// The video screen and its playback options: each new player gets the
// viewer's volume and speed, and a quality chosen in the player fetches the
// address again and carries on from the same moment.

#include "zuvivideoplayerviewcontroller.h"

#include "danmaku/zuvidanmakuoverlayview.h"
#include "net/zuviapiclient.h"
#include "platform/zuvilifetime.h"
#include "platform/zuvischeduler.h"
#include "zuviqualitypreference.h"

namespace {
const QString kHideQualityFailure = QStringLiteral("hideQualitySwitchFailure");
constexpr double kQualityFailureShownFor = 3.0;
} // namespace

void ZuviVideoPlayerViewController::wirePlaybackOptions()
{
    using O = ZuviPlaybackOptions;
    connect(m_playbackOptions, &O::qualityRequested, this,
            &ZuviVideoPlayerViewController::switchQuality);
    connect(this, &ZuviVideoPlayerViewController::moviePlayerChanged, m_playbackOptions, [this] {
        m_playbackOptions->setPlayer(m_moviePlayer);
        m_playbackOptions->setActiveQuality(m_moviePlayer ? m_activeQuality : 0);
        // A released player ends any switch still on its way; its answer
        // is dropped by the request numbers.
        if (!m_moviePlayer)
            m_playbackOptions->setSwitchingQuality(false);
    });
}

void ZuviVideoPlayerViewController::switchQuality(int quality)
{
    const std::optional<ZuviVideoPage> page = selectedPage();
    // While the first address is still coming there is nothing to switch.
    if (!page || m_loadingPlayURL || !m_acceptsMediaCallbacks)
        return;
    const int playbackID = m_playbackRequestID;
    const int switchID = ++m_qualitySwitchRequestID;
    const qint64 cid = page->cid;
    // Where to carry on if the player is gone by the time the answer comes
    // (it failed at the old quality, say).
    const double position = m_moviePlayer ? moviePlaybackTime() : m_restorePlaybackTime;
    m_scheduler->cancel(this, kHideQualityFailure);
    m_playbackOptions->setSwitchingQuality(true);
    setStateLabel(
        QStringLiteral("正在切换到 %1").arg(ZuviQualityPreference::displayTitleForQuality(quality)),
        true);
    m_client->fetchPlayURLWithBVID(
        m_detail ? m_detail->bvid : m_videoItem.bvid, cid,
        ZuviPlaybackOptions::qualityLadderFrom(quality),
        ZuviLifetime::bound(this, [this, playbackID, switchID, cid,
                                   position](const QString &urlString, int answeredQuality,
                                             const ZuviError &error) {
            if (!m_acceptsMediaCallbacks || playbackID != m_playbackRequestID ||
                switchID != m_qualitySwitchRequestID || cid != m_loadingCID)
                return;
            m_playbackOptions->setSwitchingQuality(false);
            if (urlString.isEmpty() || !error.isNull()) {
                showQualitySwitchFailure(error.message);
                return;
            }
            // The movie kept playing while the address came: carry on from
            // where it is now.
            playSwitchedQuality(QUrl(urlString), answeredQuality,
                                m_moviePlayer ? moviePlaybackTime() : position);
        }));
}

void ZuviVideoPlayerViewController::playSwitchedQuality(const QUrl &url, int quality,
                                                        double position)
{
    m_pendingPlayURL = url;
    m_pendingQuality = quality;
    m_activeQuality = quality;
    m_playbackOptions->setActiveQuality(quality);
    setRetryVisible(false);
    if (!m_moviePlayer) {
        m_pendingInitialPlaybackTime = position;
        startMovieWithURL(url, quality);
        return;
    }
    // The same player takes the new address, so fullscreen, the view and
    // the viewer's settings stay as they are.
    ZuviMoviePlayer *player = m_moviePlayer;
    m_fastForward->endIfNeeded(player);
    setStateLabel(QStringLiteral("正在播放 %1p").arg(quality), true);
    player->pause();
    // The position first: a player may have the new media loaded before
    // setContentURL returns, and it starts wherever it was told by then.
    player->setInitialPlaybackTime(position);
    player->setContentURL(url);
    m_playbackOptions->setPlayer(player);
    m_overlay->clearVisibleDanmaku();
    m_overlay->resetForPlaybackTime(position);
    m_lastDanmakuTickPlaybackTime = -1.0;
    m_stagnantPlaybackTickCount = 0;
    player->play();
}

void ZuviVideoPlayerViewController::showQualitySwitchFailure(const QString &message)
{
    // The movie that plays goes on; the failure shows for a moment over it.
    const QString reason = message.isEmpty() ? QStringLiteral("没有可播放的地址") : message;
    setStateLabel(QStringLiteral("清晰度切换失败：%1").arg(reason), true);
    if (!m_moviePlayer) {
        setRetryVisible(true);
        return;
    }
    m_scheduler->callAfter(this, kHideQualityFailure, kQualityFailureShownFor,
                           [this] { setStateLabel(m_stateText, false); });
}

// The stored quality preference, which the in-player choice leaves alone.

int ZuviVideoPlayerViewController::preferredQualityModeIndex() const
{
    return ZuviQualityPreference(m_defaults).modeIndex();
}

QList<int> ZuviVideoPlayerViewController::currentQualityOrder() const
{
    return ZuviQualityPreference(m_defaults).qualityOrder();
}

QString ZuviVideoPlayerViewController::currentQualityModeTitle() const
{
    return ZuviQualityPreference(m_defaults).modeTitle();
}

QString ZuviVideoPlayerViewController::qualityDisplayTitleForQuality(int quality)
{
    return ZuviQualityPreference::displayTitleForQuality(quality);
}
