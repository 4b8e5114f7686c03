#pragma once

#include "model/zuvivideoitem.h"

#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <optional>

class ZuviScheduler;
class ZuviVideoSideContent;

// The card shown over the player when a movie ends or fails: a badge, a
// title, a meta line and the first related video with its cover, with
// replay, exit and play-related buttons. In fullscreen, after a normal end,
// it counts down from five and then asks for the related video to be played
// (autoPlayRequested). What the buttons do to the player is the screen's
// business; this part only keeps the card's state and texts.
class ZuviPlaybackEndCard : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the video screen")
    Q_PROPERTY(bool visible READ isVisible NOTIFY changed)
    Q_PROPERTY(bool inFullscreen READ isInFullscreen NOTIFY changed)
    Q_PROPERTY(QString badgeText READ badgeText NOTIFY changed)
    Q_PROPERTY(QString titleText READ titleText NOTIFY changed)
    Q_PROPERTY(QString metaText READ metaText NOTIFY changed)
    Q_PROPERTY(bool relatedButtonEnabled READ isRelatedButtonEnabled NOTIFY changed)
    Q_PROPERTY(QUrl coverSource READ coverSource NOTIFY changed)
    Q_PROPERTY(int countdownRemaining READ countdownRemaining NOTIFY changed)

public:
    static constexpr int kCountdownSeconds = 5;

    ZuviPlaybackEndCard(ZuviScheduler *scheduler, ZuviVideoSideContent *sideContent,
                        QObject *parent = nullptr);
    ~ZuviPlaybackEndCard() override;

    // Shows the card for a finish reason; an error end (1) never autoplays.
    void show(int reason, bool fullscreen);
    void hide();
    // The card for a failure: "播放失败" with the error and no related video.
    void showError(const QString &message);
    // The card while the related video loads in the kept fullscreen player.
    void showLoadingNextVideo(const ZuviVideoItem &video);
    // Fullscreen was left from the card: it stays, inline.
    void moveInline();

    // The meta line alone, for the steps of starting the next movie.
    void setMetaText(const QString &text);
    void updateRelatedCard();
    void startCountdownIfNeeded();
    void cancelCountdown();
    bool isCountdownRunning() const;

    bool isVisible() const { return m_visible; }
    bool isInFullscreen() const { return m_inFullscreen; }
    bool isAutoPlayEnabled() const { return m_autoPlayEnabled; }
    int reason() const { return m_reason; }
    QString badgeText() const { return m_badgeText; }
    QString titleText() const { return m_titleText; }
    QString metaText() const { return m_metaText; }
    bool isRelatedButtonEnabled() const { return m_relatedButtonEnabled; }
    QString coverKey() const { return m_coverKey; }
    QUrl coverSource() const { return m_coverSource; }
    int countdownRemaining() const { return m_countdownRemaining; }

signals:
    void changed();
    // The countdown ran out: play the first related video.
    void autoPlayRequested();

private:
    void countdownTick();
    void setCover(const QString &key, const QString &urlString);

    ZuviScheduler *m_scheduler;
    ZuviVideoSideContent *m_sideContent;
    bool m_visible = false;
    bool m_inFullscreen = false;
    bool m_autoPlayEnabled = true;
    int m_reason = 0;
    // The card names the related video (not an error, not the next video
    // loading), so newly arrived related videos may refill it.
    bool m_showsRelated = false;
    int m_countdownRemaining = 0;
    QString m_badgeText;
    QString m_titleText;
    QString m_metaText;
    bool m_relatedButtonEnabled = false;
    QString m_coverKey;
    QUrl m_coverSource;
};
