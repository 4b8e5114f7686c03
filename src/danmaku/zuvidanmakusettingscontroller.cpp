#include "zuvidanmakusettingscontroller.h"

#include "platform/zuvidefaults.h"
#include "platform/zuvinotificationcenter.h"
#include "zuvidanmakublocklist.h"
#include "zuvidesktopmotion.h"

#include <QFile>
#include <QSaveFile>
#include <QStringList>

namespace {

// The rules of a block list text: trimmed, without blank lines.
QStringList rulesOf(const QString &text)
{
    QStringList rules;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        const QString rule = line.trimmed();
        if (!rule.isEmpty())
            rules.append(rule);
    }
    return rules;
}

QString localPath(const QUrl &file)
{
    return file.isLocalFile() ? file.toLocalFile() : file.toString();
}

} // namespace

ZuviDanmakuSettingsController::ZuviDanmakuSettingsController(QObject *parent)
    : ZuviDanmakuSettingsController(ZuviDefaults::standardDefaults(),
                                    ZuviNotificationCenter::defaultCenter(), parent)
{
}

ZuviDanmakuSettingsController::ZuviDanmakuSettingsController(ZuviDefaults *defaults,
                                                             ZuviNotificationCenter *center,
                                                             QObject *parent)
    : QObject(parent), m_defaults(defaults), m_center(center)
{
    reload();
    // Another panel (inline and fullscreen each have one) may change them too.
    m_center->addObserver(QString::fromLatin1(ZuviDanmakuSettings::didChangeNotification), this,
                          [this](const ZuviNotification &) { reload(); });
}

void ZuviDanmakuSettingsController::reload()
{
    const ZuviDanmakuSettings stored = ZuviDanmakuSettings::fromDefaults(*m_defaults);
    if (stored == m_settings && !m_blockListSummary.isEmpty())
        return;
    m_settings = stored;
    describeBlockList();
    emit settingsChanged();
}

bool ZuviDanmakuSettingsController::desktopPrefersReducedMotion() const
{
    return ZuviDesktopMotion::prefersReducedMotion();
}

void ZuviDanmakuSettingsController::store(const ZuviDanmakuSettings &settings)
{
    const ZuviDanmakuSettings next = settings.clamped();
    if (next == m_settings)
        return;
    m_settings = next;
    describeBlockList();
    next.saveToDefaults(*m_defaults);
    emit settingsChanged();
    m_center->post(QString::fromLatin1(ZuviDanmakuSettings::didChangeNotification), this);
}

void ZuviDanmakuSettingsController::setBlockListText(const QString &text)
{
    change(&ZuviDanmakuSettings::blockListText, text);
}

void ZuviDanmakuSettingsController::describeBlockList()
{
    const ZuviDanmakuBlockList list(m_settings.blockListText);
    m_blockListProblems = list.problemText();
    m_blockListSummary = QStringLiteral("%1 个关键词，%2 个正则表达式")
                             .arg(list.keywordCount())
                             .arg(list.expressionCount());
}

void ZuviDanmakuSettingsController::setStatusText(const QString &text)
{
    m_statusText = text;
    emit statusTextChanged();
}

bool ZuviDanmakuSettingsController::importBlockList(const QUrl &file)
{
    QFile in(localPath(file));
    if (!in.open(QIODevice::ReadOnly | QIODevice::Text)) {
        setStatusText(QStringLiteral("无法读取 %1").arg(in.fileName()));
        return false;
    }
    QStringList rules = rulesOf(m_settings.blockListText);
    int added = 0;
    QStringList refused;
    for (const QString &rule : rulesOf(QString::fromUtf8(in.readAll()))) {
        const QString problem = ZuviDanmakuBlockList::problemWithRule(rule);
        if (!problem.isEmpty()) {
            refused.append(problem);
        } else if (!rules.contains(rule)) {
            rules.append(rule);
            ++added;
        }
    }
    ZuviDanmakuSettings next = m_settings;
    next.blockListText = rules.join(QLatin1Char('\n'));
    store(next);
    QString status = QStringLiteral("已导入 %1 条规则").arg(added);
    if (!refused.isEmpty())
        status += QStringLiteral("，拒绝 %1 条：\n%2").arg(refused.size()).arg(refused.join('\n'));
    setStatusText(status);
    return true;
}

bool ZuviDanmakuSettingsController::exportBlockList(const QUrl &file)
{
    const QStringList rules = rulesOf(m_settings.blockListText);
    QSaveFile out(localPath(file));
    const QByteArray text = rules.isEmpty() ? QByteArray() : (rules.join('\n') + '\n').toUtf8();
    if (!out.open(QIODevice::WriteOnly) || out.write(text) != text.size() || !out.commit()) {
        setStatusText(QStringLiteral("无法写入 %1").arg(out.fileName()));
        return false;
    }
    setStatusText(QStringLiteral("已导出 %1 条规则").arg(rules.size()));
    return true;
}

void ZuviDanmakuSettingsController::resetToDefaults()
{
    store(ZuviDanmakuSettings());
}
