// The demo service's documents and files: the remote configuration with
// its conditional answers, pictures drawn at the asked size, and media with
// Range answers.
#include "zuvidemoservice.h"

#include "zuvidemoservicesupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSize>

using namespace ZuviDemoServiceSupport;

QByteArray ZuviDemoService::configDocument(bool developer) const
{
    const ZuviDemoConfigMessage &message = m_state.configMessage(developer);
    QJsonObject messageObject{{"version", message.version}, {"text", message.text}};
    if (!message.image.isEmpty())
        messageObject.insert("image", message.image);
    return QJsonDocument(QJsonObject{{"message", messageObject},
                                     {"service", "oldzuvi-demo-service"},
                                     {"channel", developer ? "developer" : "main"}})
        .toJson(QJsonDocument::Indented);
}

ZuviDemoResponse ZuviDemoService::remoteConfig(const ZuviDemoRequest &request)
{
    const bool developer = request.path.contains("_dev");
    const QByteArray body = configDocument(developer);
    const QByteArray etag =
        '"' + QCryptographicHash::hash(body, QCryptographicHash::Sha1).toHex().left(20) + '"';
    const qint64 modified = m_state.configMessage(developer).modifiedAt;
    const QByteArray lastModified = httpDate(modified);
    // An entity tag, when sent, decides alone; otherwise the date does.
    const QByteArray ifNoneMatch = request.header("If-None-Match");
    const QByteArray ifModifiedSince = request.header("If-Modified-Since");
    bool unchanged = false;
    if (!ifNoneMatch.isEmpty()) {
        for (const QByteArray &tag : ifNoneMatch.split(','))
            unchanged = unchanged || tag.trimmed() == etag || tag.trimmed() == "W/" + etag ||
                        tag.trimmed() == "*";
    } else if (!ifModifiedSince.isEmpty()) {
        const qint64 since = parseHttpDate(ifModifiedSince);
        unchanged = since >= 0 && modified <= since;
    }
    ZuviDemoResponse response =
        unchanged ? ZuviDemoResponse::content(QByteArray(), QByteArray(), 304)
                  : ZuviDemoResponse::content(body, "application/json; charset=utf-8");
    response.addHeader("ETag", etag);
    response.addHeader("Last-Modified", lastModified);
    response.addHeader("Cache-Control", "no-cache");
    return response;
}

ZuviDemoResponse ZuviDemoService::picture(const ZuviDemoRequest &request)
{
    // "/img/<kind>/<key>.jpg", optionally followed by the thumbnail suffix
    // "@<w>w_<h>h_1c_<q>q.jpg" that asks for a size and a quality.
    static const QRegularExpression pattern(
        QStringLiteral("^/img/(cover|face|pic)/"
                       "([A-Za-z0-9_-]+)\\.(?:jpg|png)(?:@(\\d+)w_(\\d+)h_1c_(\\d+)q\\.jpg)?$"));
    const QRegularExpressionMatch match = pattern.match(request.path);
    if (!match.hasMatch())
        return ZuviDemoResponse::content("404 picture not found\n", "text/plain", 404);
    const QString kindName = match.captured(1);
    const ZuviDemoImageRenderer::Kind kind =
        kindName == QLatin1String("cover")  ? ZuviDemoImageRenderer::Cover
        : kindName == QLatin1String("face") ? ZuviDemoImageRenderer::Face
                                            : ZuviDemoImageRenderer::Picture;
    QSize size = ZuviDemoImageRenderer::naturalSize(kind);
    int quality = 85;
    if (match.hasCaptured(3) && !match.captured(3).isEmpty()) {
        size = QSize(match.captured(3).toInt(), match.captured(4).toInt());
        quality = match.captured(5).toInt();
        if (size.width() < 1 || size.height() < 1)
            return ZuviDemoResponse::content("400 bad size\n", "text/plain", 400);
    }
    ZuviDemoResponse response = ZuviDemoResponse::content(
        m_images.jpeg(kind, match.captured(2), size, quality), "image/jpeg");
    response.addHeader("Cache-Control", "max-age=86400");
    response.acceptsRanges = true;
    return response;
}

ZuviDemoResponse ZuviDemoService::media(const ZuviDemoRequest &request)
{
    static const QRegularExpression pattern(QStringLiteral("^/media/([A-Za-z0-9_-]+\\.mp4)$"));
    const QRegularExpressionMatch match = pattern.match(request.path);
    if (!match.hasMatch())
        return ZuviDemoResponse::content("404 media not found\n", "text/plain", 404);
    const QString name = match.captured(1);
    auto cached = m_mediaCache.find(name);
    if (cached == m_mediaCache.end()) {
        QFile file(QDir(m_options.mediaDirectory).filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            return ZuviDemoResponse::content(
                "404 media not found: run demo/make-media.sh build/media\n", "text/plain", 404);
        cached = m_mediaCache.insert(name, file.readAll());
    }
    ZuviDemoResponse response = ZuviDemoResponse::content(cached.value(), "video/mp4");
    response.acceptsRanges = true;
    return response;
}
