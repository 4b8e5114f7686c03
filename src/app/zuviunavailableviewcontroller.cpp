#include "zuviunavailableviewcontroller.h"

#include "views/zuvistateview.h"

ZuviUnavailableViewController::ZuviUnavailableViewController(const QString &title, QObject *parent)
    : ZuviViewController(title, parent), m_stateView(new ZuviStateView(this))
{
    m_stateView->setMode(ZuviStateView::Empty, QStringLiteral("暂未开放"),
                         QStringLiteral("「%1」页面在当前版本中暂不可用。").arg(title), QString());
}

QUrl ZuviUnavailableViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("UnavailablePage.qml"));
}
