#pragma once

#include "app/zuviviewcontroller.h"

#include <QVariantList>

class ZuviImageLoader;
class ZuviNotificationCenter;
class ZuviRemoteNotificationPresenter;

// "历史通知": the stored operator messages, newest first, each opening its
// detail; "清空" empties the history after a confirmation.
class ZuviRemoteNotificationHistoryViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from the settings")
    // One map per row: "title", "detail"; an empty history has none.
    Q_PROPERTY(QVariantList rows READ rows NOTIFY rowsChanged)
    Q_PROPERTY(bool empty READ isEmpty NOTIFY rowsChanged)
    Q_PROPERTY(QString headerText READ headerText CONSTANT)
    Q_PROPERTY(QString footerText READ footerText CONSTANT)

public:
    struct Services {
        ZuviRemoteNotificationPresenter *presenter = nullptr;
        ZuviNotificationCenter *center = nullptr;
        ZuviImageLoader *imageLoader = nullptr;
    };

    explicit ZuviRemoteNotificationHistoryViewController(const Services &services,
                                                         QObject *parent = nullptr);
    ~ZuviRemoteNotificationHistoryViewController() override;

    QUrl pageUrl() const override;

    QVariantList rows() const { return m_rows; }
    bool isEmpty() const { return m_rows.isEmpty(); }
    QString headerText() const { return QStringLiteral("最新在上，保留最近 100 条"); }
    QString footerText() const
    {
        return QStringLiteral(
            "每次收到远程通知时会自动保存一份。点按单条通知可查看完整内容和图片。");
    }

    // A row's texts for one stored entry.
    static QString titleForEntry(const QVariantMap &entry);
    static QString detailForEntry(const QVariantMap &entry);

    Q_INVOKABLE void confirmClear();
    Q_INVOKABLE void selectRow(int index);

signals:
    void rowsChanged();

private:
    void reloadEntries();

    Services m_services;
    QVariantList m_entries;
    QVariantList m_rows;
};
