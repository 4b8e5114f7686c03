#pragma once

#include <QSGTransformNode>

class QSGOpacityNode;
class QSGSimpleTextureNode;
class QSGTexture;
class QSizeF;

// The scene-graph form of one flying label: a transform (its position) over
// an opacity over the label's texture. Built once per flight; every frame
// only changes the matrix and the opacity.
class ZuviDanmakuLabelNode : public QSGTransformNode
{
public:
    // Takes ownership of the texture, which may be null for a label without text.
    ZuviDanmakuLabelNode(quint64 serial, QSGTexture *texture, const QSizeF &size);

    quint64 serial() const { return m_serial; }
    void place(qreal x, qreal y, qreal opacity);

private:
    quint64 m_serial;
    QSGOpacityNode *m_opacityNode;
    QSGSimpleTextureNode *m_textureNode = nullptr;
};
