#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>

class QWindow;

// The application's keyboard: keys that work anywhere in the window without
// first clicking into a picture or a list, and never while a text field has
// the focus (a "?" or an "f" typed into the search field is text).
//
// Keys are fixed here and mapped to actions; what an action does is bound
// by whoever can do it, for as long as that object lives. The application
// binds going back, refreshing and searching; a video screen binds the
// player keys when it is made:
//
//     shortcuts->bind(ZuviKeyboardShortcuts::PlayPause, this, [this] { ... });
//
// The newest binding of a living owner wins, so a video screen pushed over
// another takes the keys and gives them back when it is destroyed. A key
// whose action nobody has bound is left to the focused item.
class ZuviKeyboardShortcuts : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application has one keyboard layer")
    Q_PROPERTY(bool helpVisible READ isHelpVisible WRITE setHelpVisible NOTIFY helpVisibleChanged)
    Q_PROPERTY(QVariantList helpSections READ helpSections CONSTANT)

public:
    enum Action {
        NoAction = -1,
        Back,
        Refresh,
        Search,
        Help,
        PlayPause,
        SeekBackward,
        SeekForward,
        SeekBackwardLong,
        SeekForwardLong,
        VolumeUp,
        VolumeDown,
        Mute,
        Fullscreen,
        LeaveFullscreen,
        Danmaku,
        SlowerSpeed,
        FasterSpeed,
        ActionCount
    };
    Q_ENUM(Action)

    // The player's seek steps, in seconds, for the screen binding them.
    static constexpr double kShortSeek = 5;
    static constexpr double kLongSeek = 30;

    explicit ZuviKeyboardShortcuts(QObject *parent = nullptr);

    static ZuviKeyboardShortcuts *sharedShortcuts();

    // Watches the key presses of a window before its items see them.
    void attachToWindow(QWindow *window);

    void bind(Action action, QObject *owner, std::function<void()> handler);
    // A binding that takes the key only while the condition holds; at other
    // times the key goes on to the focused item (Esc closes a menu when
    // there is no fullscreen to leave).
    void bind(Action action, QObject *owner, std::function<void()> handler,
              std::function<bool()> condition);
    // Whether a living owner handles the action now.
    bool isBound(Action action) const;

    // The action of a key press, NoAction for a key that has none.
    static Action actionForKey(int key, Qt::KeyboardModifiers modifiers);
    // Runs the action of a key press; false when it was left alone.
    bool handleKeyPress(int key, Qt::KeyboardModifiers modifiers, bool autoRepeat = false);

    bool isHelpVisible() const { return m_helpVisible; }
    void setHelpVisible(bool visible);
    // Every key, in sections: [{title, rows: [{keys, text, actions}]}].
    static QVariantList helpSections();

signals:
    void helpVisibleChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Binding {
        Action action;
        QPointer<QObject> owner;
        std::function<void()> handler;
        std::function<bool()> condition;
    };

    bool textFieldHasFocus() const;

    QPointer<QWindow> m_window;
    QList<Binding> m_bindings;
    bool m_helpVisible = false;
};
