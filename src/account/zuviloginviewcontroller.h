#pragma once

#include "app/zuviviewcontroller.h"

#include <QImage>
#include <QString>

class ZuviAPIClient;
class ZuviScheduler;
struct ZuviError;

// Signs the user in with a QR code: asks the service for a login address and
// its key, draws the address as a QR code for the phone application to scan,
// and asks every two seconds whether the code was scanned and confirmed. On
// success the client has already stored the session cookie; the screen says
// so through didLogin() and closes itself. An expired code waits for the user
// to ask for a new one.
class ZuviLoginViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from the profile")
    Q_PROPERTY(QString hintText READ hintText CONSTANT)
    Q_PROPERTY(QString refreshButtonTitle READ refreshButtonTitle CONSTANT)
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusTextChanged)
    Q_PROPERTY(QImage qrcodeImage READ qrcodeImage NOTIFY qrcodeImageChanged)
    Q_PROPERTY(bool refreshEnabled READ isRefreshEnabled NOTIFY refreshEnabledChanged)
    Q_PROPERTY(double defaultImageSide READ defaultImageSide CONSTANT)

public:
    static constexpr double kPollInterval = 2.0;
    // The image's side when the page has not reported its width yet.
    static constexpr double kPadImageSide = 260;
    static constexpr double kPhoneImageSide = 230;
    static const char *const kPollTimerName;

    ZuviLoginViewController(ZuviAPIClient *client, ZuviScheduler *scheduler,
                            QObject *parent = nullptr);
    ~ZuviLoginViewController() override;

    QUrl pageUrl() const override;

    QString hintText() const { return QStringLiteral("使用 Lumetra 客户端扫码"); }
    QString refreshButtonTitle() const { return QStringLiteral("重新生成二维码"); }
    QString statusText() const { return m_statusText; }
    QImage qrcodeImage() const { return m_qrcodeImage; }
    bool isRefreshEnabled() const { return m_refreshEnabled; }
    QString qrcodeKey() const { return m_qrcodeKey; }
    QString loginURL() const { return m_loginURL; }
    bool isPolling() const;
    // 260 on a tablet, 230 on a phone or a device that cannot tell.
    static double defaultImageSide();
    bool isPollingInFlight() const { return m_pollingInFlight; }

    // The page reports the width of its image view; the next code is drawn
    // at that side.
    Q_INVOKABLE void setImageViewWidth(double width) { m_imageViewWidth = width; }
    Q_INVOKABLE void refreshButtonTapped();

    void generateQRCode();
    void startPolling();
    void stopPolling();
    void pollLoginStatus();
    void viewWillDisappear() override;

signals:
    void statusTextChanged();
    void qrcodeImageChanged();
    void refreshEnabledChanged();
    // The service confirmed the login; the session cookie is stored.
    void didLogin(ZuviLoginViewController *controller);

protected:
    void viewDidLoad() override;

private:
    void applyGeneratedCode(const QString &loginURL, const QString &key, const ZuviError &error);
    void applyPollResult(int code, const QString &message, const ZuviError &error);
    double imageSideLength() const;
    void setStatusText(const QString &text);
    void setRefreshEnabled(bool enabled);
    void setQRCodeImage(const QImage &image);

    ZuviAPIClient *m_client;
    ZuviScheduler *m_scheduler;
    QString m_qrcodeKey;
    QString m_loginURL;
    QString m_statusText;
    QImage m_qrcodeImage;
    double m_imageViewWidth = 0;
    bool m_refreshEnabled = false;
    bool m_pollingInFlight = false;
    // Each generate request and each polling session has its number; an
    // answer for an older one is dropped, so a poll that was still under way
    // when the user asked for a new code cannot report on the old one.
    int m_generateRequestID = 0;
    int m_pollSession = 0;
};
