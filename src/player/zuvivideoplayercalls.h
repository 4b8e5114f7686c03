#pragma once

#include "zuvimovieplayer.h"

#include <QRectF>
#include <QString>

// Names and limits shared by the files of the video screen's controller:
// the names of its timer and delayed calls (cancelled by name on release)
// and small helpers over the player's states.
namespace ZuviVideoPlayerCalls {
inline const QString kDanmakuTimer = QStringLiteral("danmakuTimer");
inline const QString kCompletePendingFinish =
    QStringLiteral("completePendingFullscreenMovieFinish");
inline const QString kResumeAfterExit = QStringLiteral("resumeMovieAfterFullscreenExitIfNeeded");
inline const QString kRecoverFromUserExit = QStringLiteral("recoverFromFullscreenUserExitIfNeeded");
inline const QString kMoveOverlay = QStringLiteral("moveDanmakuOverlayToFullscreenWindow");

constexpr double kPi = 3.14159265358979323846;
constexpr int kPreviewLimit = 20;
constexpr int kLogLineLimit = 8;
constexpr int kStallTickLimit = 4;

inline QString rectText(const QRectF &r)
{
    return QStringLiteral("{{%1, %2}, {%3, %4}}")
        .arg(r.x(), 0, 'g', 6)
        .arg(r.y(), 0, 'g', 6)
        .arg(r.width(), 0, 'g', 6)
        .arg(r.height(), 0, 'g', 6);
}

inline bool isPausedLike(ZuviMoviePlayer::PlaybackState state)
{
    return state == ZuviMoviePlayer::PlaybackStopped || state == ZuviMoviePlayer::PlaybackPaused ||
           state == ZuviMoviePlayer::PlaybackInterrupted;
}
} // namespace ZuviVideoPlayerCalls
