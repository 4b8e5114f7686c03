#include "zuvidebuglogviewcontroller.h"

#include "platform/zuvinotificationcenter.h"
#include "zuvidebuglog.h"

#include <QClipboard>
#include <QGuiApplication>

const char *const ZuviDebugLogViewController::kEmptyText =
    "暂无调试日志。\n\n这里会写入接口错误、图片加载失败、弹幕接口调试信息，以及以后手动写入的任意调"
    "试文本。";

ZuviDebugLogViewController::ZuviDebugLogViewController(ZuviDebugLog *log,
                                                       ZuviNotificationCenter *center,
                                                       QObject *parent)
    : ZuviViewController(QStringLiteral("调试日志"), parent), m_log(log), m_center(center)
{
    m_center->addObserver(QString::fromLatin1(ZuviDebugLog::kDidChangeNotification), this,
                          [this](const ZuviNotification &) { emit logChanged(); });
}

ZuviDebugLogViewController::~ZuviDebugLogViewController()
{
    m_center->removeObserver(this);
}

QUrl ZuviDebugLogViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("DebugLogPage.qml"));
}

QString ZuviDebugLogViewController::displayText() const
{
    const QString text = m_log->logText();
    return text.isEmpty() ? QString::fromUtf8(kEmptyText) : text;
}

bool ZuviDebugLogViewController::isLogEmpty() const
{
    return m_log->logText().isEmpty();
}

QStringList ZuviDebugLogViewController::actionTitles() const
{
    return {QStringLiteral("复制全部"), QStringLiteral("清空"), QStringLiteral("取消")};
}

void ZuviDebugLogViewController::copyAll()
{
    if (QClipboard *clipboard = QGuiApplication::clipboard())
        clipboard->setText(m_log->logText());
    emit alertRequested(QStringLiteral("已复制"), QStringLiteral("全部调试日志已复制。"),
                        QStringLiteral("好"));
}

void ZuviDebugLogViewController::clearLog()
{
    m_log->clearLog();
}

void ZuviDebugLogViewController::chooseAction(int index)
{
    if (index == 0)
        copyAll();
    else if (index == 1)
        clearLog();
}
