#pragma once

#include "app/zuviviewcontroller.h"
#include "images/zuviimageloader.h"
#include "images/zuviimageprovider.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtTest>

#include <memory>

// Loads screens' pages the way the application shows them and collects
// every warning the QML engine and Qt Quick print meanwhile, so that a suite
// can fail a page that loads with one. The suite starts the collection in
// initTestCase(), inside the test run, so that the run's own logging still
// sees every message, and stops it in cleanupTestCase().
class ZuviPageWarnings
{
public:
    void start()
    {
        s_current = this;
        m_previous = qInstallMessageHandler(capture);
    }
    void stop()
    {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }

    QStringList warnings;

    // Loads the controller's page in a window of that size, with the image
    // provider on the loader, and lets it render.
    static void loadPage(ZuviViewController *controller, QSize size, ZuviImageLoader *images)
    {
        QQmlEngine engine;
        engine.addImageProvider(ZuviImageProvider::kProviderId, new ZuviImageProvider(images));
        QQuickWindow window;
        window.resize(size);
        QQmlComponent component(&engine, controller->pageUrl());
        QVERIFY2(component.isReady(), qPrintable(component.errorString()));
        std::unique_ptr<QObject> page(component.createWithInitialProperties(
            {{"controller", QVariant::fromValue(controller)}}));
        QVERIFY2(page, qPrintable(component.errorString()));
        auto *item = qobject_cast<QQuickItem *>(page.get());
        QVERIFY(item);
        item->setParentItem(window.contentItem());
        item->setSize(size);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_VERIFY(item->isVisible());
        QCoreApplication::processEvents();
    }

private:
    static void capture(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (s_current && type != QtDebugMsg && type != QtInfoMsg)
            s_current->warnings.append(message);
        if (s_current && s_current->m_previous)
            s_current->m_previous(type, context, message);
    }

    static inline ZuviPageWarnings *s_current = nullptr;
    QtMessageHandler m_previous = nullptr;
};
