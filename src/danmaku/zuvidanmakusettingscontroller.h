#pragma once

#include "zuvidanmakusettings.h"

#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

class ZuviDefaults;
class ZuviNotificationCenter;

// Drives the danmaku settings panel: every control reads and writes one
// value here, which is clamped into its range, stored in the defaults at
// once and announced with ZuviDanmakuSettings::didChangeNotification, so
// every overlay following the stored settings applies it live. The block
// list is edited as text and imported from or exported to a text file,
// one rule per line; broken expressions are named, never applied.
class ZuviDanmakuSettingsController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        int opacityPercent READ opacityPercent WRITE setOpacityPercent NOTIFY settingsChanged)
    Q_PROPERTY(
        int textScalePercent READ textScalePercent WRITE setTextScalePercent NOTIFY settingsChanged)
    Q_PROPERTY(double speed READ speed WRITE setSpeed NOTIFY settingsChanged)
    Q_PROPERTY(int displayArea READ displayArea WRITE setDisplayArea NOTIFY settingsChanged)
    Q_PROPERTY(
        bool showsScrolling READ showsScrolling WRITE setShowsScrolling NOTIFY settingsChanged)
    Q_PROPERTY(bool showsTop READ showsTop WRITE setShowsTop NOTIFY settingsChanged)
    Q_PROPERTY(bool showsBottom READ showsBottom WRITE setShowsBottom NOTIFY settingsChanged)
    Q_PROPERTY(bool showsColored READ showsColored WRITE setShowsColored NOTIFY settingsChanged)
    Q_PROPERTY(bool mergesRepeats READ mergesRepeats WRITE setMergesRepeats NOTIFY settingsChanged)
    Q_PROPERTY(double mergeWindow READ mergeWindow WRITE setMergeWindow NOTIFY settingsChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY settingsChanged)
    Q_PROPERTY(
        QString blockListText READ blockListText WRITE setBlockListText NOTIFY settingsChanged)
    Q_PROPERTY(QString blockListProblems READ blockListProblems NOTIFY settingsChanged)
    Q_PROPERTY(QString blockListSummary READ blockListSummary NOTIFY settingsChanged)
    Q_PROPERTY(bool desktopPrefersReducedMotion READ desktopPrefersReducedMotion CONSTANT)
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusTextChanged)

public:
    explicit ZuviDanmakuSettingsController(QObject *parent = nullptr);
    ZuviDanmakuSettingsController(ZuviDefaults *defaults, ZuviNotificationCenter *center,
                                  QObject *parent = nullptr);

    const ZuviDanmakuSettings &settings() const { return m_settings; }

    int opacityPercent() const { return m_settings.opacityPercent; }
    void setOpacityPercent(int value) { change(&ZuviDanmakuSettings::opacityPercent, value); }
    int textScalePercent() const { return m_settings.textScalePercent; }
    void setTextScalePercent(int value) { change(&ZuviDanmakuSettings::textScalePercent, value); }
    double speed() const { return m_settings.speed; }
    void setSpeed(double value) { change(&ZuviDanmakuSettings::speed, value); }
    int displayArea() const { return m_settings.displayArea; }
    void setDisplayArea(int value) { change(&ZuviDanmakuSettings::displayArea, value); }
    bool showsScrolling() const { return m_settings.showsScrolling; }
    void setShowsScrolling(bool value) { change(&ZuviDanmakuSettings::showsScrolling, value); }
    bool showsTop() const { return m_settings.showsTop; }
    void setShowsTop(bool value) { change(&ZuviDanmakuSettings::showsTop, value); }
    bool showsBottom() const { return m_settings.showsBottom; }
    void setShowsBottom(bool value) { change(&ZuviDanmakuSettings::showsBottom, value); }
    bool showsColored() const { return m_settings.showsColored; }
    void setShowsColored(bool value) { change(&ZuviDanmakuSettings::showsColored, value); }
    bool mergesRepeats() const { return m_settings.mergesRepeats; }
    void setMergesRepeats(bool value) { change(&ZuviDanmakuSettings::mergesRepeats, value); }
    double mergeWindow() const { return m_settings.mergeWindow; }
    void setMergeWindow(double value) { change(&ZuviDanmakuSettings::mergeWindow, value); }
    bool reducedMotion() const { return m_settings.reducedMotion; }
    void setReducedMotion(bool value) { change(&ZuviDanmakuSettings::reducedMotion, value); }
    QString blockListText() const { return m_settings.blockListText; }
    void setBlockListText(const QString &text);

    QString blockListProblems() const { return m_blockListProblems; }
    QString blockListSummary() const { return m_blockListSummary; }
    bool desktopPrefersReducedMotion() const;
    QString statusText() const { return m_statusText; }

    // Adds the rules of a text file (one per line) to the block list;
    // broken expressions are refused and named. Returns whether the file was read.
    Q_INVOKABLE bool importBlockList(const QUrl &file);
    // Writes the block list's rules to a text file, one per line.
    Q_INVOKABLE bool exportBlockList(const QUrl &file);
    // Every control back to its default (the block list included).
    Q_INVOKABLE void resetToDefaults();

signals:
    void settingsChanged();
    void statusTextChanged();

private:
    template <typename T> void change(T ZuviDanmakuSettings::*field, T value)
    {
        ZuviDanmakuSettings next = m_settings;
        next.*field = value;
        store(next);
    }
    void store(const ZuviDanmakuSettings &settings);
    void reload();
    void describeBlockList();
    void setStatusText(const QString &text);

    ZuviDefaults *m_defaults;
    ZuviNotificationCenter *m_center;
    ZuviDanmakuSettings m_settings;
    QString m_blockListProblems;
    QString m_blockListSummary;
    QString m_statusText;
};
