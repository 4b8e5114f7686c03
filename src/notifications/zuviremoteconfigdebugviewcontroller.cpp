#include "zuviremoteconfigdebugviewcontroller.h"

#include "config/zuviremoteconfig.h"
#include "platform/zuvierror.h"
#include "platform/zuvilifetime.h"
#include "platform/zuvinotificationcenter.h"
#include "zuviremotenotificationpresenter.h"

#include <QJsonDocument>

ZuviRemoteConfigDebugViewController::ZuviRemoteConfigDebugViewController(const Services &services,
                                                                         QObject *parent)
    : ZuviViewController(QStringLiteral("远程配置"), parent), m_services(services)
{
    ZuviNotificationCenter *center = m_services.center;
    center->addObserver(QString::fromLatin1(ZuviRemoteConfig::kDidUpdateNotification), this,
                        [this](const ZuviNotification &) {
                            m_lastErrorText.clear();
                            emit stateChanged();
                        });
    center->addObserver(
        QString::fromLatin1(ZuviRemoteConfig::kDidFailNotification), this,
        [this](const ZuviNotification &notification) {
            const auto error = notification.userInfo.value("error").value<ZuviError>();
            m_lastErrorText = error.message.isEmpty() ? QStringLiteral("未知错误") : error.message;
            emit stateChanged();
        });
    center->addObserver(
        QString::fromLatin1(ZuviRemoteNotificationPresenter::kHistoryDidChangeNotification), this,
        [this](const ZuviNotification &) { emit stateChanged(); });
}

ZuviRemoteConfigDebugViewController::~ZuviRemoteConfigDebugViewController()
{
    m_services.center->removeObserver(this);
}

QUrl ZuviRemoteConfigDebugViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("RemoteConfigDebugPage.qml"));
}

QString ZuviRemoteConfigDebugViewController::messageLines() const
{
    ZuviRemoteConfig *config = m_services.config;
    const auto document = config->currentConfig();
    if (!document)
        return QStringLiteral("配置 message: 未获取");
    const auto message =
        ZuviRemoteConfigMessage::messageWithDictionary(document->value(QStringLiteral("message")));
    if (!message)
        return QStringLiteral("配置 message: 无有效 message");
    auto orEmpty = [](const QString &text) { return text.isEmpty() ? QStringLiteral("空") : text; };
    return QStringList{
        QStringLiteral("配置 message version: %1").arg(message->version),
        QStringLiteral("配置 message image: %1").arg(orEmpty(message->imageURLString)),
        QStringLiteral("配置 message text: %1").arg(orEmpty(message->text))}
        .join('\n');
}

QString ZuviRemoteConfigDebugViewController::stateText() const
{
    if (m_refreshing)
        return QStringLiteral("刷新远程配置中...");
    ZuviRemoteConfig *config = m_services.config;
    const QString source = config->currentSourceURLString();
    QStringList lines{
        QStringLiteral("远程配置状态"),
        QString(),
        QStringLiteral("URL: %1").arg(source.isEmpty() ? QStringLiteral("未配置") : source),
        QStringLiteral("本地 message version: %1").arg(config->storedMessageVersion()),
        messageLines(),
        QStringLiteral("历史通知: %1 条")
            .arg(m_services.presenter->notificationHistoryEntries().size()),
        QStringLiteral("弹出通知按钮: 优先弹当前配置 message，没有时回放最近一条历史通知。")};
    if (!m_lastErrorText.isEmpty())
        lines.append(QStringLiteral("上次刷新错误: %1").arg(m_lastErrorText));
    lines.append(QString());
    lines.append(QStringLiteral("获取到的配置:"));
    const auto document = config->currentConfig();
    lines.append(document
                     ? QString::fromUtf8(QJsonDocument(*document).toJson(QJsonDocument::Indented))
                     : QStringLiteral("暂无配置。"));
    return lines.join('\n');
}

void ZuviRemoteConfigDebugViewController::refresh()
{
    if (m_refreshing)
        return;
    m_refreshing = true;
    emit stateChanged();
    m_services.config->refreshWithCompletion(
        ZuviLifetime::bound(this, [this](const std::optional<QJsonObject> &, const ZuviError &) {
            m_refreshing = false;
            emit stateChanged();
        }));
}

void ZuviRemoteConfigDebugViewController::presentLatestNotification()
{
    if (!m_services.presenter->presentLatestNotificationForTesting())
        emit alertRequested(QStringLiteral("暂无通知"),
                            QStringLiteral("当前远程配置没有可显示的 message，历史通知也为空。"),
                            QStringLiteral("好"));
}
