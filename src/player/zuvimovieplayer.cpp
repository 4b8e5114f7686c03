#include "zuvimovieplayer.h"

#include <QQuickWindow>

void ZuviMoviePlayer::placeViewForFullscreen(bool fullscreen)
{
    QQuickItem *item = view();
    QQuickWindow *window = item ? item->window() : nullptr;
    if (!item || !window)
        return;
    QQuickItem *root = window->contentItem();
    if (fullscreen) {
        if (item->parentItem() == root)
            return;
        m_inlineParent = item->parentItem();
        m_inlineGeometry = QRectF(item->position(), item->size());
        m_inlineZ = item->z();
        item->setParentItem(root);
        item->setPosition(QPointF(0, 0));
        item->setSize(root->size());
        // The window grows to the screen after this; the view follows it.
        const auto fill = [item, root] { item->setSize(root->size()); };
        m_rootWidth = connect(root, &QQuickItem::widthChanged, item, fill);
        m_rootHeight = connect(root, &QQuickItem::heightChanged, item, fill);
        // Above every page and popup of the window.
        item->setZ(10000);
        if (window->isVisible()) {
            m_windowVisibilityBeforeFullscreen = window->visibility();
            window->showFullScreen();
        }
        return;
    }
    if (item->parentItem() != root)
        return;
    disconnect(m_rootWidth);
    disconnect(m_rootHeight);
    item->setParentItem(m_inlineParent);
    item->setPosition(m_inlineGeometry.topLeft());
    item->setSize(m_inlineParent ? m_inlineParent->size() : m_inlineGeometry.size());
    item->setZ(m_inlineZ);
    if (window->isVisible() && window->visibility() == QWindow::FullScreen) {
        const auto before = QWindow::Visibility(m_windowVisibilityBeforeFullscreen);
        window->setVisibility(before == QWindow::FullScreen || before == QWindow::Hidden
                                  ? QWindow::Windowed
                                  : before);
    }
}
