#include "zuviplaybackendcard.h"

#include "images/zuviimageprovider.h"
#include "platform/zuvischeduler.h"
#include "zuvivideosidecontent.h"

namespace {
const QString kCountdownTimer = QStringLiteral("playbackEndCountdownTimer");
}

ZuviPlaybackEndCard::ZuviPlaybackEndCard(ZuviScheduler *scheduler,
                                         ZuviVideoSideContent *sideContent, QObject *parent)
    : QObject(parent), m_scheduler(scheduler), m_sideContent(sideContent)
{
    // Related videos that arrive while the card is up fill it in, and in
    // fullscreen they start the countdown the card was waiting for.
    connect(sideContent, &ZuviVideoSideContent::relatedChanged, this, [this] {
        if (!m_visible || !m_showsRelated)
            return;
        updateRelatedCard();
        startCountdownIfNeeded();
    });
}

ZuviPlaybackEndCard::~ZuviPlaybackEndCard()
{
    m_scheduler->cancelAll(this);
}

void ZuviPlaybackEndCard::show(int reason, bool fullscreen)
{
    m_reason = reason;
    m_autoPlayEnabled = reason != 1;
    m_inFullscreen = fullscreen;
    m_visible = true;
    m_showsRelated = true;
    updateRelatedCard();
    startCountdownIfNeeded();
}

void ZuviPlaybackEndCard::hide()
{
    if (!m_visible)
        return;
    m_visible = false;
    m_inFullscreen = false;
    emit changed();
}

void ZuviPlaybackEndCard::showError(const QString &message)
{
    cancelCountdown();
    m_reason = 1;
    m_autoPlayEnabled = false;
    m_visible = true;
    m_inFullscreen = true;
    m_showsRelated = false;
    setCover(QString(), QString());
    m_badgeText = QStringLiteral("播放失败");
    m_titleText = message;
    m_metaText = QStringLiteral("可以重播当前视频，或稍后再试");
    m_relatedButtonEnabled = false;
    emit changed();
}

void ZuviPlaybackEndCard::showLoadingNextVideo(const ZuviVideoItem &video)
{
    cancelCountdown();
    m_autoPlayEnabled = true;
    m_inFullscreen = true;
    m_showsRelated = false;
    m_badgeText = QStringLiteral("正在播放");
    m_titleText = video.title.isEmpty() ? QStringLiteral("未命名视频") : video.title;
    m_metaText = QStringLiteral("正在加载推荐视频，保持全屏播放");
    m_relatedButtonEnabled = false;
    setCover(QString(), QString());
    emit changed();
}

void ZuviPlaybackEndCard::moveInline()
{
    cancelCountdown();
    m_inFullscreen = false;
    m_visible = true;
    m_showsRelated = true;
    updateRelatedCard();
}

void ZuviPlaybackEndCard::setMetaText(const QString &text)
{
    m_metaText = text;
    emit changed();
}

void ZuviPlaybackEndCard::updateRelatedCard()
{
    const std::optional<ZuviVideoItem> video = m_sideContent->firstRelatedVideo();
    const bool autoPlayHere = m_inFullscreen && m_autoPlayEnabled;
    m_badgeText = m_inFullscreen && m_countdownRemaining >= 1 && video
                      ? QStringLiteral("%1秒后播放").arg(m_countdownRemaining)
                      : QStringLiteral("相关推荐");
    m_relatedButtonEnabled = video.has_value();
    if (video) {
        m_titleText = video->title.isEmpty() ? QStringLiteral("未命名视频") : video->title;
        const QString owner =
            video->ownerName.isEmpty() ? QStringLiteral("未知 UP") : video->ownerName;
        const QString plays =
            video->playCountText.isEmpty() ? QStringLiteral("0") : video->playCountText;
        m_metaText = (autoPlayHere ? QStringLiteral("即将播放推荐  UP %1  播放 %2")
                                   : QStringLiteral("点按播放推荐  UP %1  播放 %2"))
                         .arg(owner, plays);
        setCover(video->bvid.isEmpty() ? video->coverURLString : video->bvid,
                 video->coverURLString);
    } else {
        setCover(QString(), QString());
        const bool loading = m_sideContent->isLoadingRelated();
        const QString status = m_sideContent->relatedStatusText();
        m_titleText = loading ? QStringLiteral("相关推荐加载中")
                              : (status.isEmpty() ? QStringLiteral("暂无相关推荐") : status);
        if (autoPlayHere)
            m_metaText = loading ? QStringLiteral("正在准备自动播放第一个推荐")
                                 : QStringLiteral("没有可自动播放的推荐");
        else
            m_metaText = QStringLiteral("上方按钮可重播当前视频");
    }
    emit changed();
}

void ZuviPlaybackEndCard::setCover(const QString &key, const QString &urlString)
{
    if (key.isEmpty()) {
        m_coverKey.clear();
        m_coverSource.clear();
        return;
    }
    if (key == m_coverKey)
        return;
    // The card's picture is the small, low-quality cover: it is shown dimmed
    // behind text, and the end of a movie is no time to wait for a big one.
    // The page's image follows the source, so a key that changes again
    // before the load finishes simply replaces it.
    m_coverKey = key;
    m_coverSource = urlString.isEmpty()
                        ? QUrl()
                        : QUrl(ZuviImageProvider::sourceURL(QStringLiteral("low"), urlString));
}

// MARK: - Countdown

void ZuviPlaybackEndCard::startCountdownIfNeeded()
{
    if (!m_autoPlayEnabled || !m_inFullscreen || !m_visible ||
        !m_sideContent->firstRelatedVideo() || isCountdownRunning())
        return;
    m_countdownRemaining = kCountdownSeconds;
    updateRelatedCard();
    m_scheduler->repeat(this, kCountdownTimer, 1.0, [this] { countdownTick(); });
}

void ZuviPlaybackEndCard::countdownTick()
{
    if (!m_visible || !m_autoPlayEnabled || !m_inFullscreen) {
        cancelCountdown();
        return;
    }
    m_countdownRemaining -= 1;
    if (m_countdownRemaining < 1) {
        cancelCountdown();
        if (m_sideContent->firstRelatedVideo())
            emit autoPlayRequested();
        return;
    }
    updateRelatedCard();
}

void ZuviPlaybackEndCard::cancelCountdown()
{
    m_scheduler->cancel(this, kCountdownTimer);
    m_countdownRemaining = 0;
}

bool ZuviPlaybackEndCard::isCountdownRunning() const
{
    return m_scheduler->isScheduled(const_cast<ZuviPlaybackEndCard *>(this), kCountdownTimer);
}
