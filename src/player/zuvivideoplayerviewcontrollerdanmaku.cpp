// The video screen's danmaku: the list for the selected page, the local echo
// of a sent danmaku, the developer preview texts and log lines, and the tick
// that drives the overlay from the movie's clock.

#include "zuvivideoplayerviewcontroller.h"

#include "danmaku/zuvidanmakuoverlayview.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvilifetime.h"
#include "platform/zuvischeduler.h"
#include "zuvivideoplayercalls.h"

#include <QQuickWindow>

#include <algorithm>
#include <cmath>

using namespace ZuviVideoPlayerCalls;

// MARK: - Danmaku list

bool ZuviVideoPlayerViewController::defaultDanmakuEnabled() const
{
    const QString key = QString::fromLatin1(kDanmakuEnabledKey);
    return !m_defaults->containsKey(key) || m_defaults->boolForKey(key);
}

void ZuviVideoPlayerViewController::syncDanmakuEnabledFromDefaults()
{
    m_danmakuEnabled = defaultDanmakuEnabled();
    m_overlay->setDanmakuEnabled(m_danmakuEnabled);
    if (m_danmakuEnabled && m_moviePlayer)
        m_overlay->resetForPlaybackTime(moviePlaybackTime());
    emit danmakuChanged();
}

void ZuviVideoPlayerViewController::setDanmakuEnabledByUser(bool enabled)
{
    if (enabled == m_danmakuEnabled)
        return;
    // The switch is the user default; every screen reads it when it appears.
    m_defaults->setBool(enabled, QString::fromLatin1(kDanmakuEnabledKey));
    m_defaults->synchronize();
    syncDanmakuEnabledFromDefaults();
    if (m_danmakuOverlayInFullscreen)
        moveDanmakuOverlayToFullscreenWindow();
}

void ZuviVideoPlayerViewController::loadDanmakuForCID(qint64 cid, int requestID)
{
    m_danmakuItems.clear();
    m_danmakuStatusText = QStringLiteral("弹幕加载中");
    m_danmakuLogLines.clear();
    appendDanmakuAPILogLine(QStringLiteral("开始加载 CID %1").arg(cid));
    emit danmakuChanged();
    m_client->fetchDanmakuWithCID(
        cid, ZuviLifetime::bound(this, [this, cid, requestID](const QList<ZuviDanmakuItem> &items,
                                                              const ZuviError &error) {
            if (!m_acceptsMediaCallbacks || requestID != m_playbackRequestID || cid != m_loadingCID)
                return;
            if (error.hasError()) {
                m_danmakuStatusText = QStringLiteral("弹幕加载失败，不影响播放");
                m_danmakuItems.clear();
                appendDanmakuAPILogLine(QStringLiteral("完成 失败 %1").arg(error.message));
            } else {
                m_danmakuItems = items;
                m_danmakuStatusText = items.isEmpty() ? QStringLiteral("暂无弹幕") : QString();
                appendDanmakuAPILogLine(QStringLiteral("完成 成功 %1条").arg(items.size()));
                appendDanmakuAPILogLine(danmakuTimeRangeTextForItems(items));
            }
            m_overlay->setDanmakuItems(m_danmakuItems);
            if (m_moviePlayer) {
                const double t = moviePlaybackTime();
                m_overlay->resetForPlaybackTime(t);
                appendDanmakuAPILogLine(QStringLiteral("reset 到 %1s").arg(t, 0, 'f', 1));
            }
            emit danmakuChanged();
        }));
}

void ZuviVideoPlayerViewController::appendLocalDanmakuText(const QString &text, double playbackTime)
{
    std::optional<ZuviDanmakuItem> item = ZuviDanmakuItem::itemWithText(text);
    if (!item)
        return;
    item->time = playbackTime;
    item->mode = 1;
    item->fontSize = 16;
    item->colorRGB = 0xFFFFFF;
    QList<ZuviDanmakuItem> items = m_danmakuItems;
    items.append(*item);
    std::stable_sort(
        items.begin(), items.end(),
        [](const ZuviDanmakuItem &a, const ZuviDanmakuItem &b) { return a.time < b.time; });
    m_danmakuItems = items;
    m_danmakuStatusText.clear();
    m_overlay->setDanmakuItems(m_danmakuItems);
    // A reset to the sent moment launches it within the overlay's look-back.
    m_overlay->resetForPlaybackTime(playbackTime);
    emit danmakuChanged();
}

double ZuviVideoPlayerViewController::currentPlaybackTimeForDanmaku() const
{
    return moviePlaybackTime();
}

// MARK: - Preview texts and the log panel

QString
ZuviVideoPlayerViewController::danmakuTimeRangeTextForItems(const QList<ZuviDanmakuItem> &items)
{
    if (items.isEmpty())
        return QStringLiteral("弹幕时间 --");
    return QStringLiteral("弹幕时间 %1s - %2s")
        .arg(items.constFirst().time, 0, 'f', 1)
        .arg(items.constLast().time, 0, 'f', 1);
}

QString ZuviVideoPlayerViewController::danmakuPreviewSummaryText() const
{
    if (!m_danmakuItems.isEmpty()) {
        const int count = int(m_danmakuItems.size());
        return QStringLiteral("已加载 %1 条，点击查看前 %2 条")
            .arg(count)
            .arg(std::min(count, kPreviewLimit));
    }
    return m_danmakuStatusText.isEmpty() ? QStringLiteral("暂无弹幕") : m_danmakuStatusText;
}

QString ZuviVideoPlayerViewController::danmakuPreviewAlertMessage() const
{
    QString message;
    const int count = int(m_danmakuItems.size());
    const int shown = std::min(count, kPreviewLimit);
    for (int i = 0; i < shown; ++i) {
        const QString &text = m_danmakuItems.at(i).text;
        if (!text.isEmpty())
            message += QStringLiteral("%1. %2\n").arg(i + 1).arg(text);
    }
    if (count > shown)
        message += QStringLiteral("\n还有 %1 条弹幕未显示").arg(count - shown);
    if (message.isEmpty())
        return m_danmakuStatusText.isEmpty() ? QStringLiteral("暂无弹幕") : m_danmakuStatusText;
    return message;
}

bool ZuviVideoPlayerViewController::showsDanmakuPreview() const
{
    return developerModeEnabled();
}

bool ZuviVideoPlayerViewController::showsFullscreenDirectionGuide() const
{
    const QString key = QString::fromLatin1(kFullscreenDirectionGuideEnabledKey);
    return developerModeEnabled() && (!m_defaults->containsKey(key) || m_defaults->boolForKey(key));
}

void ZuviVideoPlayerViewController::appendDanmakuAPILogLine(const QString &line)
{
    if (line.isEmpty())
        return;
    m_danmakuLogLines.append(line);
    while (m_danmakuLogLines.size() > kLogLineLimit)
        m_danmakuLogLines.removeFirst();
    // The lines are kept for the preview; the panel itself stays hidden.
    emit danmakuChanged();
}

void ZuviVideoPlayerViewController::danmakuAPILogNotification(const QString &message)
{
    if (developerModeEnabled())
        appendDanmakuAPILogLine(message);
}

// MARK: - Timer and tick

void ZuviVideoPlayerViewController::startDanmakuTimer()
{
    if (m_scheduler->isScheduled(this, kDanmakuTimer))
        return;
    m_scheduler->repeat(this, kDanmakuTimer, kDanmakuTickInterval, [this] {
        tickDanmakuAtCurrentPlaybackTime();
        checkVideoFramesStillComing();
    });
}

// The overlay draws with the movie's pictures while they come (see
// ZuviDanmakuOverlayView::videoFrameShown); a whole tick without one means
// they stopped, and the overlay goes back to asking for frames itself.
void ZuviVideoPlayerViewController::movieVideoFrameDidChange()
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    m_videoFrameSinceTimerTick = true;
    m_overlay->videoFrameShown();
}

void ZuviVideoPlayerViewController::checkVideoFramesStillComing()
{
    if (!m_videoFrameSinceTimerTick)
        m_overlay->stopFollowingVideoFrames();
    m_videoFrameSinceTimerTick = false;
}

void ZuviVideoPlayerViewController::stopDanmakuTimer()
{
    m_scheduler->cancel(this, kDanmakuTimer);
    // Without the tick nothing would notice the pictures stopping.
    m_videoFrameSinceTimerTick = false;
    m_overlay->stopFollowingVideoFrames();
}

bool ZuviVideoPlayerViewController::isDanmakuTimerRunning() const
{
    return m_scheduler->isScheduled(const_cast<ZuviVideoPlayerViewController *>(this),
                                    kDanmakuTimer);
}

void ZuviVideoPlayerViewController::tickDanmakuAtCurrentPlaybackTime()
{
    if (!m_moviePlayer)
        return;
    if (m_danmakuSuspendedForFullscreenExit) {
        m_overlay->clearVisibleDanmaku();
        m_lastDanmakuTickPlaybackTime = moviePlaybackTime();
        return;
    }
    if (m_moviePlayerFullscreen)
        moveDanmakuOverlayToFullscreenWindow();
    const double t = moviePlaybackTime();
    const auto state = m_moviePlayer->playbackState();
    const bool advanced =
        m_lastDanmakuTickPlaybackTime >= 0 && t > m_lastDanmakuTickPlaybackTime + 0.005;
    if (advanced)
        m_stagnantPlaybackTickCount = 0;
    else if (m_lastDanmakuTickPlaybackTime >= 0)
        ++m_stagnantPlaybackTickCount;
    else
        m_stagnantPlaybackTickCount = 0;
    // A clock frozen for four ticks in a row (about half a second) is a
    // stall the player has not reported: the danmaku wait with the picture.
    bool playing = false;
    if (!isPausedLike(state))
        playing = advanced || (state == ZuviMoviePlayer::PlaybackPlaying &&
                               m_stagnantPlaybackTickCount < kStallTickLimit);
    m_overlay->tickAtPlaybackTime(t, playing);
    m_lastDanmakuTickPlaybackTime = t;
    if (developerModeEnabled() && ++m_danmakuTickDebugCounter % 12 == 0)
        appendDanmakuAPILogLine(m_overlay->debugStateTextForPlaybackTime(t, playing));
}
