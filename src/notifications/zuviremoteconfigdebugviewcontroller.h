#pragma once

#include "app/zuviviewcontroller.h"

class ZuviNotificationCenter;
class ZuviRemoteConfig;
class ZuviRemoteNotificationPresenter;

// "远程配置": what the configuration service holds, line by line, with a
// manual refresh and a way to show the latest message again.
class ZuviRemoteConfigDebugViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from the settings")
    Q_PROPERTY(QString stateText READ stateText NOTIFY stateChanged)
    Q_PROPERTY(bool refreshing READ isRefreshing NOTIFY stateChanged)

public:
    struct Services {
        ZuviRemoteConfig *config = nullptr;
        ZuviRemoteNotificationPresenter *presenter = nullptr;
        ZuviNotificationCenter *center = nullptr;
    };

    explicit ZuviRemoteConfigDebugViewController(const Services &services,
                                                 QObject *parent = nullptr);
    ~ZuviRemoteConfigDebugViewController() override;

    QUrl pageUrl() const override;

    QString stateText() const;
    bool isRefreshing() const { return m_refreshing; }
    QString lastErrorText() const { return m_lastErrorText; }

    Q_INVOKABLE void refresh();
    Q_INVOKABLE void presentLatestNotification();

signals:
    void stateChanged();
    void alertRequested(const QString &title, const QString &message, const QString &buttonTitle);

private:
    QString messageLines() const;

    Services m_services;
    bool m_refreshing = false;
    QString m_lastErrorText;
};
