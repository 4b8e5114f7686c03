#include "zuviremotemessageoverlayview.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace {
// Fixed parts of the panel, top to bottom.
constexpr double kInset = 18;      // panel edge to content
constexpr double kContentTop = 51; // below the title
constexpr double kButtonHeight = 40;
constexpr double kBottomSpace = 34; // button gap and panel foot
constexpr double kTextReserve = 74; // kept for the text below a picture
} // namespace

ZuviRemoteMessageOverlayView::ZuviRemoteMessageOverlayView(QQuickItem *parent) : QQuickItem(parent)
{
    // A modal card: touches outside the panel go nowhere.
    setAcceptedMouseButtons(Qt::AllButtons);
    setAcceptTouchEvents(true);
}

void ZuviRemoteMessageOverlayView::initWithMessage(const ZuviRemoteConfigMessage &message)
{
    m_message = message;
    m_wantsImage = !message.imageURLString.isEmpty();
    m_wantsText = !message.text.isEmpty();
    m_messageText = message.text;
    m_imageStatusText = m_wantsImage ? QStringLiteral("图片加载中...") : QString();
    m_imageSize = QSizeF();
    m_imageSource.clear();
    emit contentChanged();
    layoutSubviews();
}

void ZuviRemoteMessageOverlayView::updateImage(const QSizeF &imageSize, const QString &imageSource)
{
    if (imageSize.isEmpty()) {
        markImageLoadFailed();
        return;
    }
    m_wantsImage = true;
    m_imageSize = imageSize;
    m_imageSource = imageSource;
    m_imageStatusText.clear();
    emit contentChanged();
    layoutSubviews();
}

void ZuviRemoteMessageOverlayView::markImageLoadFailed()
{
    // With text the card simply becomes a text card; without, the empty
    // box says what happened rather than disappearing.
    if (m_wantsText) {
        m_wantsImage = false;
        m_imageStatusText.clear();
    } else {
        m_imageStatusText = QStringLiteral("图片加载失败");
    }
    emit contentChanged();
    layoutSubviews();
}

void ZuviRemoteMessageOverlayView::dismissButtonTapped()
{
    if (dismissBlock)
        dismissBlock();
}

void ZuviRemoteMessageOverlayView::fadeTo(double alpha, double duration)
{
    m_alpha = alpha;
    m_fadeDuration = duration;
    emit alphaChanged();
}

void ZuviRemoteMessageOverlayView::geometryChange(const QRectF &newGeometry,
                                                  const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        layoutSubviews();
}

QSizeF ZuviRemoteMessageOverlayView::sizeForText(const QString &text, const QFont &font,
                                                 const QSizeF &constraint)
{
    if (text.isEmpty())
        return QSizeF(0, 0);
    const QFontMetricsF metrics(font);
    const QRectF bounds =
        metrics.boundingRect(QRectF(0, 0, constraint.width(), 1e6), Qt::TextWordWrap, text);
    return QSizeF(std::min(bounds.width(), constraint.width()),
                  std::min(bounds.height(), constraint.height()));
}

double ZuviRemoteMessageOverlayView::imageHeightForWidth(double width, double cap) const
{
    double height = width * 9.0 / 16.0;
    if (!m_imageSize.isEmpty())
        height = width * m_imageSize.height() / m_imageSize.width();
    return std::max(std::min(height, cap), 76.0);
}

void ZuviRemoteMessageOverlayView::layoutSubviews()
{
    const double W = width();
    const double H = height();
    const bool landscape = W > H;

    double panelWidth = std::min(W - (landscape ? 96 : 44), landscape ? 460.0 : 350.0);
    if (panelWidth < 260)
        panelWidth = W - 24;
    panelWidth = std::max(panelWidth, 1.0);
    const double contentWidth = panelWidth - 2 * kInset;

    const double margin = landscape ? 18 : 36;
    double maxHeight = H - 2 * margin;
    if (maxHeight < 210)
        maxHeight = H - 16;
    maxHeight = std::max(maxHeight, 1.0);

    m_titleRect = QRectF(kInset, 17, contentWidth, 22);
    double y = kContentTop;

    if (m_wantsImage) {
        const double space = maxHeight - kContentTop - (m_wantsText ? kTextReserve : 0) -
                             kButtonHeight - kBottomSpace;
        double cap = std::min(space, landscape ? 156.0 : 220.0);
        if (cap < 72)
            cap = std::max(48.0, space);
        const double imageHeight = imageHeightForWidth(contentWidth, cap);
        m_imageRect = QRectF(kInset, y, contentWidth, imageHeight);
        m_imageStatusRect = m_imageRect.adjusted(8, 0, -8, 0);
        y += imageHeight + (m_wantsText ? 14 : 16);
    } else {
        m_imageRect = QRectF();
        m_imageStatusRect = QRectF();
    }

    if (m_wantsText) {
        QFont font;
        font.setPixelSize(kTextPixelSize);
        const double limit = std::max(42.0, maxHeight - y - kButtonHeight - kBottomSpace);
        const double textHeight =
            std::ceil(sizeForText(m_messageText, font, QSizeF(contentWidth, limit)).height());
        m_textRect = QRectF(kInset, y, contentWidth, textHeight);
        y += textHeight + 16;
    } else {
        m_textRect = QRectF();
    }

    m_buttonRect = QRectF(kInset, y, contentWidth, kButtonHeight);
    const double panelHeight = std::min(y + 52, maxHeight);
    m_panelRect =
        QRectF(std::floor((W - panelWidth) / 2),
               std::max(margin, std::floor((H - panelHeight) / 2)), panelWidth, panelHeight);
    emit layoutChanged();
}
