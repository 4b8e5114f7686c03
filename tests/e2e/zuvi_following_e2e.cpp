// Drives the following tab in a real window against a running demo service.
//
//   --check      signed in: every kind of card with its pictures, the next
//                page by offset at the end of the list, and "动态" with posts
//                alone; signed out: the login card. Saves a picture per step
//                and exits non-zero when a step fails.
//   --flick      flicks down through three pages of the tab (or, with --grid, of
//                the recommended grid) and prints the frame intervals and the
//                process's peak memory.
//
// Usage: zuvi-following-e2e --endpoints FILE --settings FILE --out DIR
//                           (--check [--signed-out] | --flick [--grid])

#include "browse/zuvifollowingviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "platform/zuvilaunchoptions.h"
#include "views/zuvistateview.h"
#include "zuvie2edriver.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QSet>

#include <algorithm>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
using ZuviE2E::say;
using ZuviE2E::Steps;

bool settled(ZuviFollowingViewController *screen)
{
    return !screen->isLoading() && !screen->isLoadingMore() && !screen->rows().isEmpty();
}

// Every item under root in the visual tree (delegates have no QObject
// parent, so the tree of items is walked, not the object tree).
void collectItems(QQuickItem *root, QList<QQuickItem *> *items)
{
    for (QQuickItem *child : root->childItems()) {
        items->append(child);
        collectItems(child, items);
    }
}

// The pictures in the view: how many there are and how many have arrived.
QPair<int, int> pictures(QQuickItem *view)
{
    int all = 0, ready = 0;
    QList<QQuickItem *> items;
    collectItems(view, &items);
    for (QQuickItem *item : std::as_const(items)) {
        if (!item->inherits("QQuickImage") || !item->isVisible())
            continue;
        if (item->property("source").toUrl().isEmpty())
            continue;
        ++all;
        ready += item->property("status").toInt() == 1; // Image.Ready
    }
    return {all, ready};
}

QQuickItem *findView(QQuickWindow *window, const char *className)
{
    QList<QQuickItem *> items;
    collectItems(window->contentItem(), &items);
    for (QQuickItem *item : std::as_const(items)) {
        if (item->inherits(className) && item->isVisible())
            return item;
    }
    return nullptr;
}
} // namespace

int main(int argc, char **argv)
{
    ZuviAppDelegate::prepareProcess();
    QGuiApplication app(argc, argv);
    ZuviLaunchOptions options;
    ZuviError error;
    if (!ZuviLaunchOptions::parse(QGuiApplication::arguments(),
                                  QProcessEnvironment::systemEnvironment(), &options, &error)) {
        say(error.message);
        return 2;
    }
    options.apply();
    QCommandLineParser parser;
    parser.addOptions({{"out", "picture directory", "dir"},
                       {"check", "check the tab's flows"},
                       {"signed-out", "expect the login card"},
                       {"flick", "measure frames over three pages"},
                       {"grid", "measure the recommended grid instead"}});
    parser.process(QStringList{QGuiApplication::arguments().first()} + options.remaining);
    const QString out = parser.value("out");

    // The endpoints and the settings file come with the launch options.
    ZuviE2E::App shell;
    if (!shell.launch(QString(), QString()))
        return 4;
    QQuickWindow *window = shell.window();
    ZuviTabBarController *tabs = shell.tabs();
    auto *following = shell.root<ZuviFollowingViewController>(2);
    auto *grid = shell.root<ZuviVideoGridViewController>(0);
    if (!following || !grid)
        return 4;
    const auto shot = [&](const QString &name) { shell.shot(out + "/" + name + ".png"); };
    Steps steps;
    const bool measureGrid = parser.isSet("grid");
    if (!measureGrid)
        tabs->selectTab(2);

    if (parser.isSet("signed-out")) {
        steps.add(
            "signed out, the login card", [&] { return following->isShowingLoginRequiredState(); },
            [&] {
                const bool card = following->stateView() &&
                                  following->stateView()->title() == QStringLiteral("用户未登录");
                shot("following-signed-out");
                Steps::check(card, "the login card's title");
            });
    } else if (parser.isSet("check")) {
        steps.add(
            "first page", [&] { return settled(following); }, [] {});
        steps.add(
            "cards of every kind with their pictures",
            [&] {
                QSet<QString> kinds;
                for (const ZuviFollowingRow &row : following->rows())
                    kinds.insert(row.value("rowType").toString());
                QQuickItem *view = findView(window, "QQuickListView");
                const auto [all, ready] = view ? pictures(view) : qMakePair(0, 0);
                steps.setLastSeen(QString("kinds %1, pictures %2 of %3")
                                      .arg(QStringList(kinds.values()).join(','))
                                      .arg(ready)
                                      .arg(all));
                return kinds.size() == 5 && all >= 8 && ready == all;
            },
            [&] {
                say(QString("rows %1, pictures %2")
                        .arg(following->rows().size())
                        .arg(pictures(findView(window, "QQuickListView")).first));
                shot("following-all");
            });
        int firstPageRows = 0;
        QString firstOffset;
        steps.add(
            "the end of the list loads the next page", [&] { return true; },
            [&] {
                firstPageRows = int(following->rows().size());
                firstOffset = following->nextOffset();
                QMetaObject::invokeMethod(findView(window, "QQuickListView"), "positionViewAtEnd");
            });
        steps.add(
            "the next page, by offset",
            [&] {
                return settled(following) && following->currentPage() == 2 &&
                       following->rows().size() > firstPageRows &&
                       following->nextOffset() != firstOffset;
            },
            [&] {
                say(QString("rows %1 after the page after offset %2")
                        .arg(following->rows().size())
                        .arg(firstOffset));
                shot("following-next-page");
                following->segmentChanged(ZuviFollowingViewController::Posts);
            });
        steps.add(
            "\"动态\" shows posts alone",
            [&] { return settled(following) && following->rows().size() >= 4; },
            [&] {
                for (const ZuviFollowingRow &row : following->rows()) {
                    if (row.contains("video"))
                        Steps::check(false, "a video row on the posts segment");
                }
                say(QString("posts %1 over %2 pages")
                        .arg(following->rows().size())
                        .arg(following->currentPage()));
                shot("following-dynamic");
            });
    } else if (parser.isSet("flick")) {
        // Frame intervals while flicking down through three pages.
        auto *frames = new QList<qint64>;
        auto *clock = new QElapsedTimer;
        auto *endOfThird = new double(-1);
        const auto pages = [&] {
            return measureGrid ? grid->currentPage() : following->currentPage();
        };
        const auto busy = [&] {
            return measureGrid ? grid->isLoading() || grid->isLoadingMore()
                               : following->isLoading() || following->isLoadingMore();
        };
        const char *viewClass = measureGrid ? "QQuickGridView" : "QQuickListView";
        steps.add(
            "first page", [&] { return pages() >= 1 && !busy(); },
            [&, frames, clock] {
                QObject::connect(window, &QQuickWindow::frameSwapped, window, [frames, clock] {
                    if (clock->isValid())
                        frames->append(clock->nsecsElapsed());
                });
                clock->start();
            });
        steps.add(
            "three pages flicked",
            [&, viewClass, endOfThird] {
                QQuickItem *view = findView(window, viewClass);
                if (!view)
                    return false;
                // The end of page 3 is where the content ended when that page
                // came in; the run stops once the view has scrolled past it.
                if (*endOfThird < 0 && pages() >= 3 && !busy())
                    *endOfThird = view->property("contentHeight").toDouble();
                const double bottom = view->property("contentY").toDouble() + view->height();
                steps.setLastSeen(QString("pages %1, bottom %2, end of page 3 %3")
                                      .arg(pages())
                                      .arg(bottom)
                                      .arg(*endOfThird));
                if (*endOfThird > 0 && bottom >= *endOfThird)
                    return true;
                if (!view->property("flicking").toBool())
                    QMetaObject::invokeMethod(view, "flick", Q_ARG(qreal, 0), Q_ARG(qreal, -2500));
                return false;
            },
            [&, frames] {
                QList<double> intervals;
                for (int i = 1; i < frames->size(); ++i)
                    intervals.append((frames->at(i) - frames->at(i - 1)) / 1e6);
                std::sort(intervals.begin(), intervals.end());
                const auto at = [&](double q) {
                    return intervals.isEmpty() ? 0.0
                                               : intervals.at(int(q * (intervals.size() - 1)));
                };
                const int slow = int(std::count_if(intervals.cbegin(), intervals.cend(),
                                                   [](double ms) { return ms > 33.4; }));
                say(QString("%1: frames %2, median %3 ms, p95 %4 ms, max %5 ms, over 33 ms %6, "
                            "peak memory %7 KiB")
                        .arg(measureGrid ? "recommended grid" : "following feed")
                        .arg(frames->size())
                        .arg(at(0.5), 0, 'f', 1)
                        .arg(at(0.95), 0, 'f', 1)
                        .arg(at(1.0), 0, 'f', 1)
                        .arg(slow)
                        .arg(ZuviE2E::processStatusKiB("VmHWM")));
            });
    }
    steps.run();
    return app.exec();
}
