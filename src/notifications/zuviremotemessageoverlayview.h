#pragma once

#include "config/zuviremoteconfigmessage.h"

#include <QFont>
#include <QQuickItem>
#include <QRectF>
#include <QSizeF>
#include <QtQml/qqmlregistration.h>

#include <functional>

// The modal card of one operator message: a dimmed cover over the whole
// container with a white panel holding the title "通知", the picture, the
// text and "知道了". The panel's geometry is computed here, from the size of
// the container, so the page only places its parts at the given rectangles.
class ZuviRemoteMessageOverlayView : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString messageText READ messageText NOTIFY contentChanged)
    Q_PROPERTY(QString imageStatusText READ imageStatusText NOTIFY contentChanged)
    Q_PROPERTY(bool wantsImage READ wantsImage NOTIFY contentChanged)
    Q_PROPERTY(bool wantsText READ wantsText NOTIFY contentChanged)
    Q_PROPERTY(bool imageLoaded READ isImageLoaded NOTIFY contentChanged)
    Q_PROPERTY(bool imageStatusVisible READ isImageStatusVisible NOTIFY contentChanged)
    // The loaded picture, by way of the image provider's memory cache.
    Q_PROPERTY(QString imageSource READ imageSource NOTIFY contentChanged)
    Q_PROPERTY(QRectF panelRect READ panelRect NOTIFY layoutChanged)
    Q_PROPERTY(QRectF titleRect READ titleRect NOTIFY layoutChanged)
    Q_PROPERTY(QRectF imageRect READ imageRect NOTIFY layoutChanged)
    Q_PROPERTY(QRectF imageStatusRect READ imageStatusRect NOTIFY layoutChanged)
    Q_PROPERTY(QRectF textRect READ textRect NOTIFY layoutChanged)
    Q_PROPERTY(QRectF buttonRect READ buttonRect NOTIFY layoutChanged)
    Q_PROPERTY(double alpha READ alpha NOTIFY alphaChanged)
    Q_PROPERTY(int fadeMilliseconds READ fadeMilliseconds NOTIFY alphaChanged)

public:
    static constexpr double kFadeInDuration = 0.18;
    static constexpr double kFadeOutDuration = 0.16;
    static constexpr int kTextPixelSize = 15;

    explicit ZuviRemoteMessageOverlayView(QQuickItem *parent = nullptr);

    void initWithMessage(const ZuviRemoteConfigMessage &message);
    const ZuviRemoteConfigMessage &message() const { return m_message; }

    QString messageText() const { return m_messageText; }
    QString imageStatusText() const { return m_imageStatusText; }
    bool wantsImage() const { return m_wantsImage; }
    bool wantsText() const { return m_wantsText; }
    bool isImageLoaded() const { return !m_imageSize.isEmpty(); }
    bool isImageStatusVisible() const { return m_wantsImage && !isImageLoaded(); }
    QString imageSource() const { return m_imageSource; }

    // A picture (shown through imageSource), or a null one for a failure.
    void updateImage(const QSizeF &imageSize, const QString &imageSource);
    void markImageLoadFailed();

    std::function<void()> dismissBlock;
    Q_INVOKABLE void dismissButtonTapped();

    // Lays the panel out for the current size; runs on every resize.
    void layoutSubviews();
    static QSizeF sizeForText(const QString &text, const QFont &font, const QSizeF &constraint);

    QRectF panelRect() const { return m_panelRect; }
    QRectF titleRect() const { return m_titleRect; }
    QRectF imageRect() const { return m_imageRect; }
    QRectF imageStatusRect() const { return m_imageStatusRect; }
    QRectF textRect() const { return m_textRect; }
    QRectF buttonRect() const { return m_buttonRect; }

    double alpha() const { return m_alpha; }
    int fadeMilliseconds() const { return qRound(m_fadeDuration * 1000); }
    // The page animates to the new alpha over the given time.
    void fadeTo(double alpha, double duration);

signals:
    void contentChanged();
    void layoutChanged();
    void alphaChanged();

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    double imageHeightForWidth(double width, double cap) const;

    ZuviRemoteConfigMessage m_message;
    QString m_messageText;
    QString m_imageStatusText;
    QString m_imageSource;
    QSizeF m_imageSize;
    bool m_wantsImage = false;
    bool m_wantsText = false;
    QRectF m_panelRect, m_titleRect, m_imageRect, m_imageStatusRect, m_textRect, m_buttonRect;
    double m_alpha = 1;
    double m_fadeDuration = 0;
};
