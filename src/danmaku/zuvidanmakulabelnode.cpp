#include "zuvidanmakulabelnode.h"

#include <QSGOpacityNode>
#include <QSGSimpleTextureNode>
#include <QSizeF>

ZuviDanmakuLabelNode::ZuviDanmakuLabelNode(quint64 serial, QSGTexture *texture, const QSizeF &size)
    : m_serial(serial), m_opacityNode(new QSGOpacityNode)
{
    appendChildNode(m_opacityNode);
    if (!texture)
        return;
    m_textureNode = new QSGSimpleTextureNode;
    m_textureNode->setTexture(texture);
    m_textureNode->setOwnsTexture(true);
    m_textureNode->setRect(0, 0, size.width(), size.height());
    m_textureNode->setFiltering(QSGTexture::Linear);
    m_opacityNode->appendChildNode(m_textureNode);
}

void ZuviDanmakuLabelNode::place(qreal x, qreal y, qreal opacity)
{
    QMatrix4x4 matrix;
    matrix.translate(float(x), float(y));
    if (matrix != this->matrix())
        setMatrix(matrix);
    if (opacity != m_opacityNode->opacity())
        m_opacityNode->setOpacity(opacity);
}
