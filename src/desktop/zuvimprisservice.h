#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

class ZuviNowPlaying;

// Offers the video being watched to the desktop's media keys and player
// widgets through the MPRIS interfaces on the session bus. The name is held
// only while a video screen holds the now-playing controls, so the desktop
// lists the application exactly while there is something to control. Without
// a session bus it does nothing.
class ZuviMprisService : public QObject
{
    Q_OBJECT

public:
    static const char kServiceName[];
    static const char kObjectPath[];

    ZuviMprisService(ZuviNowPlaying *nowPlaying, const QDBusConnection &connection,
                     QObject *parent = nullptr);
    ~ZuviMprisService() override;

    // Whether the name and the object are on the bus now.
    bool isServing() const { return !m_servedName.isEmpty(); }
    QString servedName() const { return m_servedName; }

    // Announces changed properties of one of the interfaces, while serving.
    void sendPropertiesChanged(const QString &interface, const QVariantMap &changed);

signals:
    // The desktop asked to show the window, or to quit the application.
    void raiseRequested();
    void quitRequested();

private:
    void update();
    void publish();
    void unpublish();

    ZuviNowPlaying *m_nowPlaying;
    QDBusConnection m_connection;
    QString m_servedName;
};
