#include "zuviimageresponse.h"

#include "platform/zuvimainqueue.h"

#include <QMutex>

struct ZuviImageResponse::Shared {
    QMutex mutex;
    ZuviImageResponse *response = nullptr;
};

ZuviImageResponse::ZuviImageResponse(Starter starter) : m_shared(std::make_shared<Shared>())
{
    m_shared->response = this;
    std::shared_ptr<Shared> shared = m_shared;
    ZuviMainQueue::post([shared, starter = std::move(starter)] {
        starter([shared](const QImage &image) {
            QMutexLocker lock(&shared->mutex);
            if (shared->response)
                shared->response->finishWithImage(image);
        });
    });
}

ZuviImageResponse::~ZuviImageResponse()
{
    QMutexLocker lock(&m_shared->mutex);
    m_shared->response = nullptr;
}

void ZuviImageResponse::finishWithImage(const QImage &image)
{
    m_image = image;
    emit finished();
}

QQuickTextureFactory *ZuviImageResponse::textureFactory() const
{
    return QQuickTextureFactory::textureFactoryForImage(m_image);
}

QString ZuviImageResponse::errorString() const
{
    // The loader has already written the reason to the debug log.
    return m_image.isNull() ? QStringLiteral("image not available") : QString();
}
