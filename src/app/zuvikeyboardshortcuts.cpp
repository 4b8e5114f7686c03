#include "zuvikeyboardshortcuts.h"

#include <QCoreApplication>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QVariantMap>
#include <QWindow>

namespace {
struct HelpRow {
    const char *keys;
    const char *text;
    QList<ZuviKeyboardShortcuts::Action> actions;
};

struct HelpSection {
    const char *title;
    QList<HelpRow> rows;
};

using A = ZuviKeyboardShortcuts;

const QList<HelpSection> &helpTable()
{
    static const QList<HelpSection> table{
        {"通用",
         {{"Alt + ←", "返回上一页", {A::Back}},
          {"F5", "刷新当前列表", {A::Refresh}},
          {"Ctrl + F", "搜索", {A::Search}},
          {"?", "显示或关闭本帮助", {A::Help}}}},
        {"播放视频时",
         {{"空格", "播放 / 暂停", {A::PlayPause}},
          {"← / →", "后退 / 前进 5 秒", {A::SeekBackward, A::SeekForward}},
          {"Shift + ← / →", "后退 / 前进 30 秒", {A::SeekBackwardLong, A::SeekForwardLong}},
          {"↑ / ↓", "音量增大 / 减小", {A::VolumeUp, A::VolumeDown}},
          {"M", "静音 / 取消静音", {A::Mute}},
          {"F", "全屏", {A::Fullscreen}},
          {"Esc", "退出全屏", {A::LeaveFullscreen}},
          {"D", "弹幕开 / 关", {A::Danmaku}},
          {"[ / ]", "减速 / 加速播放", {A::SlowerSpeed, A::FasterSpeed}}}},
    };
    return table;
}

// Holding a key down repeats these; a toggle would flip on every repeat.
bool repeats(ZuviKeyboardShortcuts::Action action)
{
    switch (action) {
    case A::SeekBackward:
    case A::SeekForward:
    case A::SeekBackwardLong:
    case A::SeekForwardLong:
    case A::VolumeUp:
    case A::VolumeDown:
        return true;
    default:
        return false;
    }
}
} // namespace

ZuviKeyboardShortcuts::ZuviKeyboardShortcuts(QObject *parent) : QObject(parent) {}

ZuviKeyboardShortcuts *ZuviKeyboardShortcuts::sharedShortcuts()
{
    static ZuviKeyboardShortcuts *shared = new ZuviKeyboardShortcuts;
    return shared;
}

void ZuviKeyboardShortcuts::attachToWindow(QWindow *window)
{
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    if (window)
        window->installEventFilter(this);
}

void ZuviKeyboardShortcuts::bind(Action action, QObject *owner, std::function<void()> handler)
{
    bind(action, owner, std::move(handler), {});
}

void ZuviKeyboardShortcuts::bind(Action action, QObject *owner, std::function<void()> handler,
                                 std::function<bool()> condition)
{
    if (action <= NoAction || action >= ActionCount || !owner || !handler)
        return;
    m_bindings.append({action, owner, std::move(handler), std::move(condition)});
    // Bindings go with their owners.
    connect(owner, &QObject::destroyed, this, [this] {
        m_bindings.removeIf([](const Binding &binding) { return binding.owner.isNull(); });
    });
}

bool ZuviKeyboardShortcuts::isBound(Action action) const
{
    for (const Binding &binding : m_bindings) {
        if (binding.action == action && binding.owner)
            return true;
    }
    return false;
}

ZuviKeyboardShortcuts::Action ZuviKeyboardShortcuts::actionForKey(int key,
                                                                  Qt::KeyboardModifiers modifiers)
{
    // The keypad's arrows are the same arrows.
    modifiers &= ~Qt::KeypadModifier;
    const bool plain = modifiers == Qt::NoModifier;
    switch (key) {
    case Qt::Key_Left:
        if (modifiers == Qt::AltModifier)
            return Back;
        if (modifiers == Qt::ShiftModifier)
            return SeekBackwardLong;
        return plain ? SeekBackward : NoAction;
    case Qt::Key_Right:
        if (modifiers == Qt::ShiftModifier)
            return SeekForwardLong;
        return plain ? SeekForward : NoAction;
    case Qt::Key_Back:
        return Back;
    case Qt::Key_F5:
        return plain ? Refresh : NoAction;
    case Qt::Key_F:
        if (modifiers == Qt::ControlModifier)
            return Search;
        return plain ? Fullscreen : NoAction;
    case Qt::Key_Question:
        // "?" is a shifted key on most layouts and a plain one on some.
        return (modifiers & ~Qt::ShiftModifier) == Qt::NoModifier ? Help : NoAction;
    case Qt::Key_Space:
        return plain ? PlayPause : NoAction;
    case Qt::Key_Up:
        return plain ? VolumeUp : NoAction;
    case Qt::Key_Down:
        return plain ? VolumeDown : NoAction;
    case Qt::Key_M:
        return plain ? Mute : NoAction;
    case Qt::Key_Escape:
        return plain ? LeaveFullscreen : NoAction;
    case Qt::Key_D:
        return plain ? Danmaku : NoAction;
    case Qt::Key_BracketLeft:
        return plain ? SlowerSpeed : NoAction;
    case Qt::Key_BracketRight:
        return plain ? FasterSpeed : NoAction;
    default:
        return NoAction;
    }
}

bool ZuviKeyboardShortcuts::handleKeyPress(int key, Qt::KeyboardModifiers modifiers,
                                           bool autoRepeat)
{
    const Action action = actionForKey(key, modifiers);
    if (action == NoAction)
        return false;
    // The help card closes with the key that opened it, or with Esc,
    // before Esc means anything to the player.
    if (action == Help || (action == LeaveFullscreen && m_helpVisible)) {
        if (!autoRepeat)
            setHelpVisible(action == Help && !m_helpVisible);
        return true;
    }
    for (auto it = m_bindings.crbegin(); it != m_bindings.crend(); ++it) {
        if (it->action != action || !it->owner)
            continue;
        if (it->condition && !it->condition())
            return false;
        if (autoRepeat && !repeats(action))
            return true;
        // The handler may bind or destroy; it runs from a copy.
        const std::function<void()> handler = it->handler;
        handler();
        return true;
    }
    return false;
}

void ZuviKeyboardShortcuts::setHelpVisible(bool visible)
{
    if (m_helpVisible == visible)
        return;
    m_helpVisible = visible;
    emit helpVisibleChanged();
}

QVariantList ZuviKeyboardShortcuts::helpSections()
{
    QVariantList sections;
    for (const HelpSection &section : helpTable()) {
        QVariantList rows;
        for (const HelpRow &row : section.rows) {
            QVariantList actions;
            for (Action action : row.actions)
                actions.append(int(action));
            rows.append(QVariantMap{{QStringLiteral("keys"), QString::fromUtf8(row.keys)},
                                    {QStringLiteral("text"), QString::fromUtf8(row.text)},
                                    {QStringLiteral("actions"), actions}});
        }
        sections.append(QVariantMap{{QStringLiteral("title"), QString::fromUtf8(section.title)},
                                    {QStringLiteral("rows"), rows}});
    }
    return sections;
}

bool ZuviKeyboardShortcuts::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || watched != m_window || textFieldHasFocus())
        return false;
    auto *key = static_cast<QKeyEvent *>(event);
    return handleKeyPress(key->key(), key->modifiers(), key->isAutoRepeat());
}

bool ZuviKeyboardShortcuts::textFieldHasFocus() const
{
    QObject *focus = m_window ? m_window->focusObject() : nullptr;
    if (!focus)
        return false;
    // Whatever takes typed text says so to the input method.
    QInputMethodQueryEvent query(Qt::ImEnabled);
    QCoreApplication::sendEvent(focus, &query);
    return query.value(Qt::ImEnabled).toBool();
}
