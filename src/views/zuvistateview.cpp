#include "zuvistateview.h"

#include "app/zuviimageassets.h"

const char *const ZuviStateView::kDefaultErrorImageName = "mascot_login_required";

namespace {
QColor grey(double white)
{
    return QColor::fromRgbF(white, white, white);
}
} // namespace

ZuviStateView::ZuviStateView(QObject *parent) : QObject(parent)
{
    applyQuietLook();
}

void ZuviStateView::setMode(int mode, const QString &title, const QString &message,
                            const QString &buttonTitle)
{
    m_mode = mode;
    m_title = title;
    m_message = message;
    m_buttonTitle = buttonTitle;
    m_spinnerRunning = (mode == Loading);
    if (mode == Error) {
        // The error card brings its own picture unless the caller chose one.
        if (m_imageSource.isEmpty() || m_usesDefaultErrorImage) {
            showPicture(QString::fromLatin1(kDefaultErrorImageName));
            m_usesDefaultErrorImage = imageVisible();
        }
        m_badgeVisible = imageVisible();
        applyErrorLook();
        m_usesProminentActionButton = buttonVisible();
        emit changed();
        return;
    }
    if (m_usesDefaultErrorImage) {
        hidePicture();
        m_usesDefaultErrorImage = false;
    }
    m_badgeVisible = false;
    applyQuietLook();
    // Loading never offers a prominent button; an empty card keeps the
    // style its caller chose (the login card is an empty card).
    if (buttonVisible() && mode == Loading)
        m_usesProminentActionButton = false;
    emit changed();
}

void ZuviStateView::setImageNamed(const QString &name)
{
    showPicture(name);
    m_usesDefaultErrorImage = false;
    if (imageVisible()) {
        m_badgeVisible = false;
        applyPictureLook();
    } else if (m_mode == Error) {
        m_badgeVisible = false;
    }
    emit changed();
}

void ZuviStateView::setRetryTarget(QObject *target, std::function<void()> action)
{
    m_retryTarget = nullptr;
    m_retryAction = nullptr;
    if (target && action) {
        m_retryTarget = target;
        m_retryAction = std::move(action);
    }
}

void ZuviStateView::setUsesProminentActionButton(bool prominent)
{
    if (m_usesProminentActionButton == prominent)
        return;
    m_usesProminentActionButton = prominent;
    emit changed();
}

void ZuviStateView::setWhiteBackground(bool white)
{
    if (m_whiteBackground == white)
        return;
    m_whiteBackground = white;
    emit changed();
}

void ZuviStateView::actionButtonTapped()
{
    if (!buttonVisible())
        return;
    emit actionTriggered();
    if (m_retryTarget && m_retryAction)
        m_retryAction();
}

void ZuviStateView::applyErrorLook()
{
    m_titlePixelSize = 22;
    m_titleColor = grey(0.12);
    m_messagePixelSize = 15;
    m_messageBold = true;
    m_messageColor = grey(0.45);
}

void ZuviStateView::applyQuietLook()
{
    m_titlePixelSize = 17;
    m_titleColor = grey(0.33);
    m_messagePixelSize = 13;
    m_messageBold = false;
    m_messageColor = grey(0.5);
}

void ZuviStateView::applyPictureLook()
{
    m_titlePixelSize = 24;
    m_titleColor = grey(0.12);
    m_messagePixelSize = 15;
    m_messageBold = true;
    m_messageColor = grey(0.45);
}

void ZuviStateView::showPicture(const QString &name)
{
    m_imageSource = ZuviImageAssets::urlForImageNamed(name);
    m_imageName = m_imageSource.isEmpty() ? QString() : name;
}

void ZuviStateView::hidePicture()
{
    m_imageSource.clear();
    m_imageName.clear();
}
