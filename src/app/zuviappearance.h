#pragma once

#include <QColor>
#include <QObject>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

// The look shared by every bar of the application: navigation bars tinted in
// the accent colour and opaque, tab bars tinted black. Set once at start-up;
// the pages read it as the QML singleton ZuviAppearance.
class ZuviAppearance : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QColor navigationBarTintColor READ navigationBarTintColor NOTIFY changed)
    Q_PROPERTY(QColor navigationBarBarTintColor READ navigationBarBarTintColor NOTIFY changed)
    Q_PROPERTY(bool navigationBarTranslucent READ navigationBarTranslucent NOTIFY changed)
    Q_PROPERTY(QColor tabBarTintColor READ tabBarTintColor NOTIFY changed)
    Q_PROPERTY(QColor accentColor READ accentColor CONSTANT)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor CONSTANT)
    Q_PROPERTY(bool applied READ isApplied NOTIFY changed)

public:
    static ZuviAppearance *shared();
    static ZuviAppearance *create(QQmlEngine *, QJSEngine *);

    static QColor accent() { return QColor::fromRgbF(0.93, 0.44, 0.61, 1.0); }

    void applyIOS6PrototypeAppearance();

    QColor navigationBarTintColor() const { return m_navigationBarTintColor; }
    QColor navigationBarBarTintColor() const { return m_navigationBarBarTintColor; }
    bool navigationBarTranslucent() const { return m_navigationBarTranslucent; }
    QColor tabBarTintColor() const { return m_tabBarTintColor; }
    QColor accentColor() const { return accent(); }
    // The grey-white behind every list.
    QColor backgroundColor() const { return QColor::fromRgbF(0.96, 0.96, 0.96); }
    bool isApplied() const { return m_applied; }

signals:
    void changed();

private:
    explicit ZuviAppearance(QObject *parent = nullptr);

    QColor m_navigationBarTintColor = Qt::white;
    QColor m_navigationBarBarTintColor = QColor(0xf7, 0xf7, 0xf7);
    bool m_navigationBarTranslucent = true;
    QColor m_tabBarTintColor = QColor(0x00, 0x7a, 0xff);
    bool m_applied = false;
};
