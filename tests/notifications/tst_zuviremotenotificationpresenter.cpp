#include "notifications/zuviremotemessageoverlayview.h"
#include "zuvimessageservicesfixture.h"
#include "zuvitesthttpserver.h"

#include <QBuffer>
#include <QImage>
#include <QQuickItem>
#include <QtTest>

#include <memory>

namespace {
QByteArray pngOfSize(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

ZuviRemoteConfigMessage message(qint64 version, const QString &text, const QString &image = {})
{
    ZuviRemoteConfigMessage result;
    result.version = version;
    result.text = text;
    result.imageURLString = image;
    return result;
}
} // namespace

// The presenter's history, its card and the card's picture. A message shown
// once and not again after a restart is driven end to end by messages-e2e.sh.
class TestRemoteNotificationPresenter : public QObject, private ZuviMessageServicesFixture
{
    Q_OBJECT

private:
    ZuviTestHttpServer server;
    std::unique_ptr<QQuickItem> container;

    ZuviRemoteMessageOverlayView *card() const { return presenter->currentOverlayView(); }

private slots:
    void initTestCase()
    {
        QVERIFY(server.start());
        // Pictures under /pic/ answer with a 320 x 240 picture; the rest 404.
        server.setFallbackHandler([](const ZuviRecordedRequest &request) {
            if (request.path.startsWith("/pic/")) {
                ZuviScriptedAnswer answer =
                    ZuviScriptedAnswer::text(pngOfSize(320, 240), "image/png");
                return answer;
            }
            return ZuviScriptedAnswer::text("no", "text/plain", 404);
        });
    }

    void init()
    {
        makeServices(server.baseUrl());
        container.reset(new QQuickItem);
        container->setSize(QSizeF(320, 480));
        presenter->setContainerProvider([this] { return container.get(); });
    }

    void cleanup()
    {
        releaseServices();
        container.reset();
    }

    void historyKeepsTheNewestHundred()
    {
        QSignalSpy posted(center.get(), &ZuviNotificationCenter::notificationPosted);
        for (int version = 1; version <= 101; ++version)
            presenter->saveMessageToHistory(
                message(version, QStringLiteral("第 %1 条").arg(version)));
        const QVariantList entries = presenter->notificationHistoryEntries();
        QCOMPARE(entries.size(), 100);
        QCOMPARE(entries.first().toMap().value("version").toInt(), 101);
        QCOMPARE(entries.last().toMap().value("version").toInt(), 2);
        QCOMPARE(entries.first().toMap().value("imageURL").toString(), QString());
        QCOMPARE(posted.size(), 101);
        QCOMPARE(
            posted.last().at(0).toString(),
            QString::fromLatin1(ZuviRemoteNotificationPresenter::kHistoryDidChangeNotification));

        // Nothing to show is never kept; a stored value that is not a list reads as empty.
        presenter->saveMessageToHistory(message(102, QString()));
        QCOMPARE(presenter->notificationHistoryEntries().size(), 100);
        defaults->get()->setObject(QStringLiteral("garbage"),
                                   ZuviRemoteNotificationPresenter::kHistoryKey);
        QVERIFY(presenter->notificationHistoryEntries().isEmpty());
    }

    void historyEntryWithoutVersionIsVersionOne()
    {
        const auto restored = ZuviRemoteNotificationPresenter::messageFromHistoryEntry(
            QVariantMap{{"text", "旧通知"}, {"imageURL", ""}});
        QVERIFY(restored);
        QCOMPARE(restored->version, 1);
        QCOMPARE(restored->text, QStringLiteral("旧通知"));
        QVERIFY(!ZuviRemoteNotificationPresenter::messageFromHistoryEntry(QStringLiteral("x")));
    }

    void pictureFailureGivesTextOrStatus_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("keepsImageBox");
        QTest::addColumn<QString>("status");
        QTest::newRow("with text: a text card") << "维护通知" << false << "";
        QTest::newRow("without text: the box says so") << "" << true << "图片加载失败";
    }
    void pictureFailureGivesTextOrStatus()
    {
        QFETCH(QString, text);
        QFETCH(bool, keepsImageBox);
        QFETCH(QString, status);
        const QString url = server.urlString("/missing/banner.png");
        presenter->presentMessage(message(4, text, url));
        QVERIFY(card());
        QCOMPARE(card()->imageStatusText(), QStringLiteral("图片加载中..."));
        QTRY_COMPARE(card()->imageStatusText(), status);
        QCOMPARE(card()->wantsImage(), keepsImageBox);
        QCOMPARE(card()->imageRect().isEmpty(), !keepsImageBox);
        QVERIFY(!card()->isImageLoaded());
        QVERIFY(log->logText().contains(
            QStringLiteral("[通知]\n通知图片加载失败\nversion=4\nurl=%1").arg(url)));
    }

    void pictureForAReplacedCardIsIgnored()
    {
        presenter->presentMessage(message(1, "第一条", server.urlString("/pic/slow.png")));
        QPointer<ZuviRemoteMessageOverlayView> first = card();
        presenter->presentMessage(message(2, "第二条"));
        QVERIFY(card() != first);
        // Let the picture arrive: once it is cached, a second load of it
        // completes right behind the first delivery.
        QTRY_COMPARE(images->memoryCacheCount(), 1);
        bool delivered = false;
        images->loadImageWithURLString(QVariant(server.urlString("/pic/slow.png")),
                                       [&delivered](const QImage &) { delivered = true; });
        QTRY_VERIFY(delivered);
        // The card on screen is the second one; the first (fading out) is left as it was.
        QCOMPARE(card()->messageText(), QStringLiteral("第二条"));
        QVERIFY(!card()->wantsImage());
        if (first)
            QVERIFY(!first->isImageLoaded());
        scheduler->advance(ZuviRemoteMessageOverlayView::kFadeOutDuration);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!first);
    }

    void pictureSizesTheImageArea()
    {
        presenter->presentMessage(message(3, "有图", server.urlString("/pic/ok.png")));
        QTRY_VERIFY(card()->isImageLoaded());
        QVERIFY(!card()->isImageStatusVisible());
        // 320 x 240 at 240 wide is 180 high, below the portrait cap of 220.
        QCOMPARE(card()->imageRect(), QRectF(18, 51, 240, 180));
        QVERIFY(card()->imageSource().startsWith("image://zuvi/normal?url="));
    }

    void messageWaitsForAContainer()
    {
        presenter->setContainerProvider([] { return nullptr; });
        presenter->startWithOptions(ZuviRemoteConfigOptions());
        center->post(ZuviRemoteConfig::kMessageDidUpdateNotification, config.get(),
                     message(7, "早到的通知").dictionaryRepresentation());
        QVERIFY(!card());
        scheduler->advance(0.9);
        QVERIFY(!card());
        presenter->setContainerProvider([this] { return container.get(); });
        scheduler->advance(0.29);
        QVERIFY(!card());
        scheduler->advance(0.02);
        QVERIFY(card());
        QCOMPARE(card()->messageText(), QStringLiteral("早到的通知"));
        QCOMPARE(card()->parentItem(), container.get());
        // Saved once, shown once: the retries stop with the card.
        QCOMPARE(presenter->notificationHistoryEntries().size(), 1);
        QVERIFY(!scheduler->isScheduled(presenter.get(), "presentMessage"));
    }

    void panelGeometry_data()
    {
        QTest::addColumn<QSizeF>("size");
        QTest::addColumn<double>("panelWidth");
        QTest::addColumn<double>("panelX");
        QTest::newRow("320 x 480 portrait") << QSizeF(320, 480) << 276.0 << 22.0;
        QTest::newRow("280 wide: below 260, nearly full width")
            << QSizeF(280, 480) << 256.0 << 12.0;
        QTest::newRow("1024 x 768 landscape: 460 at most") << QSizeF(1024, 768) << 460.0 << 282.0;
        QTest::newRow("768 x 1024 portrait: 350 at most") << QSizeF(768, 1024) << 350.0 << 209.0;
    }
    void panelGeometry()
    {
        QFETCH(QSizeF, size);
        QFETCH(double, panelWidth);
        QFETCH(double, panelX);
        container->setSize(size);
        presenter->presentMessage(message(1, "短通知"));
        QCOMPARE(card()->size(), size);
        QCOMPARE(card()->panelRect().width(), panelWidth);
        QCOMPARE(card()->panelRect().x(), panelX);
        QCOMPARE(card()->buttonRect().width(), panelWidth - 36);
        // The panel ends 12 below the button and never leaves the container.
        QCOMPARE(card()->panelRect().height(), card()->buttonRect().bottom() + 12);
        QVERIFY(card()->panelRect().bottom() <= size.height());
    }

    void cardFollowsItsContainerAndFadesOut()
    {
        presenter->presentMessage(message(1, "旋转"));
        QPointer<ZuviRemoteMessageOverlayView> shown = card();
        QCOMPARE(shown->alpha(), 1.0);
        QCOMPARE(shown->fadeMilliseconds(), 180);
        container->setSize(QSizeF(480, 320));
        QCOMPARE(shown->size(), QSizeF(480, 320));
        QCOMPARE(shown->panelRect().width(), 384.0); // 480 - 96 in landscape

        shown->dismissButtonTapped();
        QVERIFY(!card());
        QCOMPARE(shown->alpha(), 0.0);
        QCOMPARE(shown->fadeMilliseconds(), 160);
        scheduler->advance(0.15);
        QCOMPARE(shown->parentItem(), container.get());
        scheduler->advance(0.02);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!shown);
    }

    void latestNotificationFallsBackToHistory()
    {
        QVERIFY(!presenter->presentLatestNotificationForTesting());
        presenter->saveMessageToHistory(message(9, "回放"));
        QVERIFY(presenter->presentLatestNotificationForTesting());
        QCOMPARE(card()->messageText(), QStringLiteral("回放"));
    }
};

QTEST_MAIN(TestRemoteNotificationPresenter)
#include "tst_zuviremotenotificationpresenter.moc"
