#pragma once

#include <QImage>
#include <QQuickImageResponse>

#include <functional>
#include <memory>

// One picture asked for by QML through the "zuvi" image provider. The load
// starts on the main thread (where the loader is used) and the answer may
// come after QML has already given up on the response, so the two meet
// through a small shared state that the response detaches from when it goes.
class ZuviImageResponse : public QQuickImageResponse
{
    Q_OBJECT
public:
    // Called on the main thread with the completion that finishes this response.
    using Starter = std::function<void(std::function<void(const QImage &)>)>;

    explicit ZuviImageResponse(Starter starter);
    ~ZuviImageResponse() override;

    QQuickTextureFactory *textureFactory() const override;
    QString errorString() const override;

private:
    struct Shared;

    void finishWithImage(const QImage &image);

    std::shared_ptr<Shared> m_shared;
    QImage m_image;
};
