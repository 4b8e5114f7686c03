#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <functional>

// The overlay a list screen lays over its grid while it has nothing to show:
// a spinner while loading (mode 0), a message when the list is empty (1), an
// error with a retry button (2), and the login-required card (mode 1 with a
// picture and a prominent button). It holds everything the overlay shows and
// how; StateOverlay.qml only draws it.
class ZuviStateView : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("State views are made by their screens")
    Q_PROPERTY(int mode READ mode NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QString buttonTitle READ buttonTitle NOTIFY changed)
    Q_PROPERTY(bool buttonVisible READ buttonVisible NOTIFY changed)
    Q_PROPERTY(bool acceptsTouches READ acceptsTouches NOTIFY changed)
    Q_PROPERTY(bool spinnerRunning READ spinnerRunning NOTIFY changed)
    Q_PROPERTY(QString imageName READ imageName NOTIFY changed)
    Q_PROPERTY(QUrl imageSource READ imageSource NOTIFY changed)
    Q_PROPERTY(bool imageVisible READ imageVisible NOTIFY changed)
    Q_PROPERTY(bool badgeVisible READ badgeVisible NOTIFY changed)
    Q_PROPERTY(bool usesDefaultErrorImage READ usesDefaultErrorImage NOTIFY changed)
    Q_PROPERTY(bool usesProminentActionButton READ usesProminentActionButton WRITE
                   setUsesProminentActionButton NOTIFY changed)
    Q_PROPERTY(int titlePixelSize READ titlePixelSize NOTIFY changed)
    Q_PROPERTY(QColor titleColor READ titleColor NOTIFY changed)
    Q_PROPERTY(int messagePixelSize READ messagePixelSize NOTIFY changed)
    Q_PROPERTY(bool messageBold READ messageBold NOTIFY changed)
    Q_PROPERTY(QColor messageColor READ messageColor NOTIFY changed)
    Q_PROPERTY(bool whiteBackground READ whiteBackground WRITE setWhiteBackground NOTIFY changed)

public:
    enum Mode { Loading = 0, Empty = 1, Error = 2 };
    Q_ENUM(Mode)

    static const char *const kDefaultErrorImageName;

    explicit ZuviStateView(QObject *parent = nullptr);

    void setMode(int mode, const QString &title, const QString &message,
                 const QString &buttonTitle = QString());
    // Shows the named picture from the application's resources, or hides the
    // picture when there is none of that name.
    void setImageNamed(const QString &name);
    // Replaces every earlier retry action; an empty action leaves none.
    void setRetryTarget(QObject *target, std::function<void()> action);
    void setUsesProminentActionButton(bool prominent);
    void setWhiteBackground(bool white);

    // The action button was tapped.
    Q_INVOKABLE void actionButtonTapped();

    int mode() const { return m_mode; }
    QString title() const { return m_title; }
    QString message() const { return m_message; }
    QString buttonTitle() const { return m_buttonTitle; }
    bool buttonVisible() const { return !m_buttonTitle.isEmpty(); }
    // Without a button the overlay lets touches through to the grid below.
    bool acceptsTouches() const { return buttonVisible(); }
    bool spinnerRunning() const { return m_spinnerRunning; }
    QString imageName() const { return m_imageName; }
    QUrl imageSource() const { return m_imageSource; }
    bool imageVisible() const { return !m_imageSource.isEmpty(); }
    bool badgeVisible() const { return m_badgeVisible; }
    bool usesDefaultErrorImage() const { return m_usesDefaultErrorImage; }
    bool usesProminentActionButton() const { return m_usesProminentActionButton; }
    int titlePixelSize() const { return m_titlePixelSize; }
    QColor titleColor() const { return m_titleColor; }
    int messagePixelSize() const { return m_messagePixelSize; }
    bool messageBold() const { return m_messageBold; }
    QColor messageColor() const { return m_messageColor; }
    bool whiteBackground() const { return m_whiteBackground; }

signals:
    void changed();
    void actionTriggered();

private:
    void applyErrorLook();
    void applyQuietLook();
    void applyPictureLook();
    void showPicture(const QString &name);
    void hidePicture();

    int m_mode = Loading;
    QString m_title;
    QString m_message;
    QString m_buttonTitle;
    bool m_spinnerRunning = false;
    QString m_imageName;
    QUrl m_imageSource;
    bool m_badgeVisible = false;
    bool m_usesDefaultErrorImage = false;
    bool m_usesProminentActionButton = false;
    bool m_whiteBackground = false;
    int m_titlePixelSize = 17;
    QColor m_titleColor;
    int m_messagePixelSize = 13;
    bool m_messageBold = false;
    QColor m_messageColor;
    QPointer<QObject> m_retryTarget;
    std::function<void()> m_retryAction;
};
