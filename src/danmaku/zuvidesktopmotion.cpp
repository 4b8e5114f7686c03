#include "zuvidesktopmotion.h"

#include <QtGlobal>

#if QT_VERSION >= QT_VERSION_CHECK(6, 12, 0)
#include <QAccessibilityHints>
#include <QGuiApplication>
#include <QStyleHints>
#endif

bool ZuviDesktopMotion::prefersReducedMotion()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 12, 0)
    const QStyleHints *hints = QGuiApplication::styleHints();
    return hints && hints->accessibility() &&
           hints->accessibility()->motionPreference() == Qt::MotionPreference::ReducedMotion;
#else
    return false;
#endif
}
