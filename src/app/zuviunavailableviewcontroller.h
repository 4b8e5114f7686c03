#pragma once

#include "zuviviewcontroller.h"
Q_MOC_INCLUDE("views/zuvistateview.h")

class ZuviStateView;

// Stands in for a tab whose screen this build does not carry: it only shows
// the state view saying so.
class ZuviUnavailableViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the application shell")
    Q_PROPERTY(ZuviStateView *stateView READ stateView CONSTANT)

public:
    explicit ZuviUnavailableViewController(const QString &title, QObject *parent = nullptr);

    QUrl pageUrl() const override;
    ZuviStateView *stateView() const { return m_stateView; }

private:
    ZuviStateView *m_stateView;
};
