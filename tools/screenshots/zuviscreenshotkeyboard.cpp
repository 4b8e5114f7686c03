// Screenshot scenario of the keyboard help card, opened with its key over
// the recommended grid once the grid has its first page.
#include "app/zuviappdelegate.h"
#include "app/zuvikeyboardshortcuts.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "zuviscreenshotscenario.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QQuickWindow>

namespace {
const ZuviScreenshotScenario::Registrar keyboardHelp(
    QStringLiteral("keyboard-help"), [](const ZuviScreenshotScenario::Context &context) {
        auto *grid = qobject_cast<ZuviVideoGridViewController *>(
            context.delegate->rootTabBarController()->viewControllerAt(0)->rootViewController());
        context.whenReady(
            [grid] { return grid && !grid->isLoading() && grid->videos().size() > 0; },
            [context] {
                // Pressed as a user would, so the picture also shows that
                // the key reaches the window without a click first.
                QKeyEvent press(QEvent::KeyPress, Qt::Key_Question, Qt::ShiftModifier,
                                QStringLiteral("?"));
                QCoreApplication::sendEvent(context.window, &press);
                context.whenReady(
                    [context] { return context.delegate->keyboardShortcuts()->isHelpVisible(); },
                    context.save, 2000);
            },
            20000);
    });
} // namespace
