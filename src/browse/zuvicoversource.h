#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// Turns a cover address from a video list into the source an Image loads,
// so every card fetches its picture the same way.
class ZuviCoverSource : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit ZuviCoverSource(QObject *parent = nullptr);

    // An empty address gives an empty source (the card keeps its placeholder).
    Q_INVOKABLE static QUrl sourceForURL(const QString &urlString);
    // The small, cheap cover (160 × 90) that the video screen's side lists
    // show: a quarter of the pixels, in memory and on the wire.
    Q_INVOKABLE static QUrl lowQualitySourceForURL(const QString &urlString);
};
