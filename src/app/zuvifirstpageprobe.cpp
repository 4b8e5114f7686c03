#include "zuvifirstpageprobe.h"

#include "browse/zuvivideogridviewcontroller.h"
#include "browse/zuvivideolistmodel.h"
#include "zuviappdelegate.h"
#include "zuvinavigationcontroller.h"
#include "zuvitabbarcontroller.h"

#include <QQuickWindow>

ZuviFirstPageProbe::ZuviFirstPageProbe(ZuviAppDelegate *delegate, Handler handler, QObject *parent)
    : QObject(parent), m_window(qobject_cast<QQuickWindow *>(delegate->window())),
      m_handler(std::move(handler))
{
    ZuviTabBarController *tabs = delegate->rootTabBarController();
    auto *grid = qobject_cast<ZuviVideoGridViewController *>(
        tabs ? tabs->viewControllerAt(0)->rootViewController() : nullptr);
    if (!grid || !m_window)
        return;
    connect(grid->videosModel(), &ZuviVideoListModel::countChanged, this,
            &ZuviFirstPageProbe::listChanged);
    connect(m_window, &QQuickWindow::frameSwapped, this, &ZuviFirstPageProbe::frameShown);
    m_listHasContent = grid->videosModel()->rowCount() > 0;
}

void ZuviFirstPageProbe::listChanged()
{
    if (auto *model = qobject_cast<ZuviVideoListModel *>(sender()))
        m_listHasContent = model->rowCount() > 0;
    if (m_listHasContent && m_window)
        m_window->update();
}

void ZuviFirstPageProbe::frameShown()
{
    if (m_fired || !m_listHasContent)
        return;
    m_fired = true;
    if (m_handler)
        m_handler();
}
