#pragma once

#include "zuviviewcontroller.h"

#include <QStringList>

class ZuviDebugLog;
class ZuviNotificationCenter;

// Shows the debug log, scrolled to its end, and lets the user copy all of it
// or clear it. It follows the log's change notification while it exists.
class ZuviDebugLogViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from the settings")
    Q_PROPERTY(QString displayText READ displayText NOTIFY logChanged)
    Q_PROPERTY(bool logEmpty READ isLogEmpty NOTIFY logChanged)
    Q_PROPERTY(QString actionButtonTitle READ actionButtonTitle CONSTANT)
    Q_PROPERTY(QStringList actionTitles READ actionTitles CONSTANT)

public:
    static const char *const kEmptyText;

    ZuviDebugLogViewController(ZuviDebugLog *log, ZuviNotificationCenter *center,
                               QObject *parent = nullptr);
    ~ZuviDebugLogViewController() override;

    QUrl pageUrl() const override;

    QString displayText() const;
    bool isLogEmpty() const;
    QString actionButtonTitle() const { return QStringLiteral("操作"); }
    // The choices of the action sheet, the cancel choice last.
    QStringList actionTitles() const;

    // Puts the whole log on the clipboard and confirms with an alert.
    Q_INVOKABLE void copyAll();
    Q_INVOKABLE void clearLog();
    // A choice of the action sheet by its index in actionTitles.
    Q_INVOKABLE void chooseAction(int index);

signals:
    void logChanged();
    // The page shows a one-button alert.
    void alertRequested(const QString &title, const QString &message, const QString &buttonTitle);

private:
    ZuviDebugLog *m_log;
    ZuviNotificationCenter *m_center;
};
