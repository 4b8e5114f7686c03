#include "zuviloginviewcontroller.h"

#include "app/zuvinavigationcontroller.h"
#include "net/zuviapiclient.h"
#include "platform/zuviidiom.h"
#include "platform/zuvilifetime.h"
#include "platform/zuvischeduler.h"
#include "zuviqrcodeimagegenerator.h"

const char *const ZuviLoginViewController::kPollTimerName = "pollTimerFired";

namespace {
// The poll codes the screen acts on.
constexpr int kLoginSucceeded = 0;
constexpr int kCodeExpired = 86038;
const QString kGenerateFailedText = QStringLiteral("二维码生成失败，请重试。");
} // namespace

ZuviLoginViewController::ZuviLoginViewController(ZuviAPIClient *client, ZuviScheduler *scheduler,
                                                 QObject *parent)
    : ZuviViewController(QStringLiteral("扫码登录"), parent), m_client(client),
      m_scheduler(scheduler)
{
}

ZuviLoginViewController::~ZuviLoginViewController()
{
    m_scheduler->cancelAll(this);
}

QUrl ZuviLoginViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("LoginPage.qml"));
}

bool ZuviLoginViewController::isPolling() const
{
    return m_scheduler->isScheduled(const_cast<ZuviLoginViewController *>(this),
                                    QString::fromLatin1(kPollTimerName));
}

void ZuviLoginViewController::viewDidLoad()
{
    generateQRCode();
}

void ZuviLoginViewController::viewWillDisappear()
{
    // Covered by another screen the login may still complete; once the
    // screen has left its stack nobody can see the code any more.
    ZuviNavigationController *navigation = navigationController();
    if (!navigation || !navigation->viewControllers().contains(this))
        stopPolling();
}

void ZuviLoginViewController::refreshButtonTapped()
{
    generateQRCode();
}

void ZuviLoginViewController::generateQRCode()
{
    stopPolling();
    m_qrcodeKey.clear();
    m_loginURL.clear();
    setQRCodeImage(QImage());
    setStatusText(QStringLiteral("正在生成二维码..."));
    setRefreshEnabled(false);
    const int requestID = ++m_generateRequestID;
    m_client->generateLoginQRCodeWithCompletion(
        ZuviLifetime::bound(this, [this, requestID](const QString &loginURL, const QString &key,
                                                    const ZuviError &error) {
            if (requestID == m_generateRequestID)
                applyGeneratedCode(loginURL, key, error);
        }));
}

void ZuviLoginViewController::applyGeneratedCode(const QString &loginURL, const QString &key,
                                                 const ZuviError &error)
{
    setRefreshEnabled(true);
    if (error.hasError()) {
        const QString description = error.localizedDescription();
        setStatusText(description.isEmpty() ? kGenerateFailedText : description);
        return;
    }
    if (loginURL.isEmpty() || key.isEmpty()) {
        setStatusText(kGenerateFailedText);
        return;
    }
    const QImage image = ZuviQRCodeImageGenerator::imageWithString(loginURL, imageSideLength());
    if (image.isNull()) {
        setStatusText(kGenerateFailedText);
        return;
    }
    m_qrcodeKey = key;
    m_loginURL = loginURL;
    setQRCodeImage(image);
    setStatusText(QStringLiteral("请扫码并在手机上确认登录。"));
    startPolling();
}

double ZuviLoginViewController::imageSideLength() const
{
    return m_imageViewWidth > 0 ? m_imageViewWidth : defaultImageSide();
}

double ZuviLoginViewController::defaultImageSide()
{
    return ZuviIdiom::isPad() ? kPadImageSide : kPhoneImageSide;
}

void ZuviLoginViewController::startPolling()
{
    stopPolling();
    // The scheduler drops the timer with this screen, so a tick never
    // reaches a screen that is gone.
    m_scheduler->repeat(this, QString::fromLatin1(kPollTimerName), kPollInterval,
                        [this] { pollLoginStatus(); });
    pollLoginStatus();
}

void ZuviLoginViewController::stopPolling()
{
    m_scheduler->cancel(this, QString::fromLatin1(kPollTimerName));
    m_pollingInFlight = false;
    ++m_pollSession;
}

void ZuviLoginViewController::pollLoginStatus()
{
    // One question at a time: a slow answer must not pile up polls behind it.
    if (m_pollingInFlight || m_qrcodeKey.isEmpty())
        return;
    m_pollingInFlight = true;
    const int session = m_pollSession;
    m_client->pollLoginQRCodeWithKey(
        m_qrcodeKey, ZuviLifetime::bound(this, [this, session](int code, const QString &message,
                                                               const ZuviError &error) {
            if (session == m_pollSession)
                applyPollResult(code, message, error);
        }));
}

void ZuviLoginViewController::applyPollResult(int code, const QString &message,
                                              const ZuviError &error)
{
    m_pollingInFlight = false;
    if (error.hasError()) {
        // A failed question is shown, and the next tick asks again.
        setStatusText(error.localizedDescription());
        return;
    }
    if (!message.isEmpty())
        setStatusText(message);
    if (code == kCodeExpired) {
        stopPolling();
        setRefreshEnabled(true);
    } else if (code == kLoginSucceeded) {
        stopPolling();
        emit didLogin(this);
        if (ZuviNavigationController *navigation = navigationController();
            navigation && navigation->topViewController() == this)
            navigation->popViewController(true);
    }
}

void ZuviLoginViewController::setStatusText(const QString &text)
{
    if (m_statusText == text)
        return;
    m_statusText = text;
    emit statusTextChanged();
}

void ZuviLoginViewController::setRefreshEnabled(bool enabled)
{
    if (m_refreshEnabled == enabled)
        return;
    m_refreshEnabled = enabled;
    emit refreshEnabledChanged();
}

void ZuviLoginViewController::setQRCodeImage(const QImage &image)
{
    m_qrcodeImage = image;
    emit qrcodeImageChanged();
}
