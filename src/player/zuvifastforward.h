#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

class ZuviMoviePlayer;

// Double speed while the picture is held down, and the rules that decide
// which of the picture's two gestures may start: the long press for fast
// forward and, in fullscreen, the pan from the left edge that leaves it.
// Both gestures stay away from the player's own controls, and neither runs
// together with the other.
class ZuviFastForward : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the video screen")
    Q_PROPERTY(bool active READ isActive NOTIFY changed)
    Q_PROPERTY(bool badgeVisible READ isBadgeVisible NOTIFY changed)
    Q_PROPERTY(QString badgeText READ badgeText CONSTANT)

public:
    static constexpr double kLongPressDuration = 0.35;
    static constexpr double kFastRate = 2.0;

    explicit ZuviFastForward(QObject *parent = nullptr) : QObject(parent) {}

    // Starts double speed when the player plays, the end card is away and
    // nothing runs already; remembers the rate to go back to.
    void beginIfPossible(ZuviMoviePlayer *player, bool endCardVisible);
    // Goes back to the remembered rate; the badge goes in any case.
    void endIfNeeded(ZuviMoviePlayer *player);
    // A speed chosen while the picture is held is where the release goes.
    void setRestoreRate(double rate)
    {
        if (m_active && rate > 0)
            m_restoreRate = rate;
    }

    static bool longPressShouldBegin(bool hasPlayer, bool endCardVisible, bool touchOnControl);
    static bool edgePanShouldBegin(bool fullscreenPlayback, double startX, double viewWidth,
                                   double velocityX, double velocityY, bool touchOnControl);
    static double edgeZoneWidth(double viewWidth);

    bool isActive() const { return m_active; }
    double restoreRate() const { return m_restoreRate; }
    bool isBadgeVisible() const { return m_badgeVisible; }
    QString badgeText() const { return QStringLiteral("2x 快进"); }

signals:
    void changed();

private:
    bool m_active = false;
    double m_restoreRate = 0;
    bool m_badgeVisible = false;
};
