import QtQuick

// A picture cut to a circle, as avatars are shown. Items clip only to
// rectangles, so the circle is drawn instead: the picture is painted once
// through a circular path, filling the circle as a cropped cover would, and
// painted again only when the picture or the size changes.
Canvas {
    id: photo

    // An image source address; empty shows nothing.
    property string source
    property bool ready: false

    onSourceChanged: {
        ready = false
        if (source.length > 0) {
            if (isImageLoaded(source))
                ready = true
            else
                loadImage(source)
        }
        requestPaint()
    }
    onImageLoaded: {
        ready = source.length > 0 && isImageLoaded(source)
        requestPaint()
    }
    onWidthChanged: requestPaint()
    onHeightChanged: requestPaint()

    onPaint: {
        const context = getContext("2d")
        context.reset()
        if (!ready || width <= 0 || height <= 0)
            return
        // The picture's middle square (or the window of its shape that
        // covers the circle), scaled to the item.
        const picture = context.createImageData(source)
        const scale = Math.max(width / picture.width, height / picture.height)
        const sourceWidth = width / scale
        const sourceHeight = height / scale
        context.save()
        context.beginPath()
        context.ellipse(0, 0, width, height)
        context.clip()
        context.drawImage(source, (picture.width - sourceWidth) / 2,
                          (picture.height - sourceHeight) / 2, sourceWidth, sourceHeight,
                          0, 0, width, height)
        context.restore()
    }
}
