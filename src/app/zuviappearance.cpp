#include "zuviappearance.h"

#include <QQmlEngine>

ZuviAppearance::ZuviAppearance(QObject *parent) : QObject(parent) {}

ZuviAppearance *ZuviAppearance::shared()
{
    static ZuviAppearance *appearance = new ZuviAppearance;
    return appearance;
}

ZuviAppearance *ZuviAppearance::create(QQmlEngine *, QJSEngine *)
{
    // One instance for C++ and every engine; no engine may delete it.
    QJSEngine::setObjectOwnership(shared(), QJSEngine::CppOwnership);
    return shared();
}

void ZuviAppearance::applyIOS6PrototypeAppearance()
{
    m_navigationBarTintColor = accent();
    m_navigationBarBarTintColor = accent();
    m_navigationBarTranslucent = false;
    m_tabBarTintColor = Qt::black;
    m_applied = true;
    emit changed();
}
