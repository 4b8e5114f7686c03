#include "zuviwindowgeometry.h"

#include "platform/zuvidefaults.h"
#include "platform/zuviidiom.h"

#include <QCoreApplication>
#include <QStringList>
#include <QWindow>

namespace {
// At least this much of the title bar must be on a screen to grab it.
constexpr int kVisibleWidth = 64;
constexpr int kVisibleHeight = 32;
} // namespace

QString ZuviWindowGeometry::defaultsKey()
{
    return ZuviIdiom::current() == ZuviIdiom::Phone ? QStringLiteral("ZuviWindowGeometryPhone")
                                                    : QStringLiteral("ZuviWindowGeometryPad");
}

QString ZuviWindowGeometry::storedText(const QRect &geometry, bool maximized)
{
    return QStringLiteral("%1,%2,%3,%4,%5")
        .arg(geometry.x())
        .arg(geometry.y())
        .arg(geometry.width())
        .arg(geometry.height())
        .arg(maximized ? 1 : 0);
}

ZuviWindowGeometry::Placement ZuviWindowGeometry::placement(const QString &stored,
                                                            const QSize &fallback,
                                                            const QList<QRect> &screens)
{
    Placement result;
    result.geometry = QRect(QPoint(), fallback);
    const QStringList parts = stored.split(QLatin1Char(','));
    if (parts.size() != 5)
        return result;
    int values[5];
    for (int i = 0; i < 5; ++i) {
        bool ok = false;
        values[i] = parts[i].trimmed().toInt(&ok);
        if (!ok)
            return result;
    }
    QSize size(values[2], values[3]);
    if (size.width() < kMinimumSide || size.height() < kMinimumSide)
        return result;
    // Never larger than the largest screen can show.
    QSize largest;
    for (const QRect &screen : screens)
        largest = largest.expandedTo(screen.size());
    if (largest.isValid())
        size = size.boundedTo(largest);
    result.geometry = QRect(QPoint(values[0], values[1]), size);
    result.maximized = values[4] != 0;
    const QRect titleBar(result.geometry.topLeft(), QSize(kVisibleWidth, kVisibleHeight));
    for (const QRect &screen : screens) {
        if (screen.contains(titleBar)) {
            result.hasPosition = true;
            break;
        }
    }
    if (!result.hasPosition)
        result.geometry.moveTopLeft(QPoint());
    return result;
}

ZuviWindowGeometry::ZuviWindowGeometry(QWindow *window, ZuviDefaults *defaults, const QString &key,
                                       QObject *parent)
    : QObject(parent), m_window(window), m_defaults(defaults), m_key(key)
{
    if (!window || !defaults)
        return;
    m_normalGeometry = window->geometry();
    // A maximized window remembers the place it had before, to go back to.
    connect(window, &QWindow::xChanged, this, &ZuviWindowGeometry::follow);
    connect(window, &QWindow::yChanged, this, &ZuviWindowGeometry::follow);
    connect(window, &QWindow::widthChanged, this, &ZuviWindowGeometry::follow);
    connect(window, &QWindow::heightChanged, this, &ZuviWindowGeometry::follow);
    connect(window, &QWindow::windowStateChanged, this, &ZuviWindowGeometry::follow);
    // What is known is saved, even when the window goes before this does.
    connect(window, &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible)
            save();
    });
    connect(window, &QObject::destroyed, this, &ZuviWindowGeometry::save);
    if (QCoreApplication::instance())
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
                &ZuviWindowGeometry::save);
}

void ZuviWindowGeometry::follow()
{
    if (!m_window)
        return;
    m_maximized = m_window->windowStates().testFlag(Qt::WindowMaximized);
    if (m_window->windowStates() == Qt::WindowNoState && !m_window->geometry().isEmpty())
        m_normalGeometry = m_window->geometry();
}

void ZuviWindowGeometry::save()
{
    // Some window systems report a move or a resize only later, if at all:
    // the window, while it exists, says best where it is.
    follow();
    if (!m_defaults || m_normalGeometry.isEmpty())
        return;
    m_defaults->setString(storedText(m_normalGeometry, m_maximized), m_key);
    m_defaults->synchronize();
}
