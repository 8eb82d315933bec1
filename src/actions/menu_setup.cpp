#include "actions/menu_setup.h"

#include "window/browser_frame.h"
#include "window/theme_icons.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

namespace {

template <typename Slot>
QAction* item(QMenu* menu, const QString& title, const QKeySequence& keys, const char* symbol, BrowserFrame* frame,
    Slot slot)
{
    QAction* action = menu->addAction(title);
    if (!keys.isEmpty()) {
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WindowShortcut);
    }
    if (symbol)
        action->setIcon(iconSymbol(symbol));
    QObject::connect(action, &QAction::triggered, frame, slot);
    return action;
}

QKeySequence keys(QKeyCombination combination)
{
    return QKeySequence(combination);
}

} // namespace

void MenuSetup::install(BrowserFrame* frame)
{
    QMenuBar* bar = frame->menuBar();
    bar->clear();

    QMenu* app = bar->addMenu(QStringLiteral("Brondel"));
    item(app, QStringLiteral("About Brondel"), {}, "info.circle", frame, [frame] {
        QMessageBox::about(frame, QStringLiteral("About Brondel"), QStringLiteral("Brondel \u2014 native file manager"));
    });
    app->addSeparator();
    item(app, QStringLiteral("Quit Brondel"), keys(Qt::CTRL | Qt::Key_Q), "power", frame,
        [] { QApplication::closeAllWindows(); });

    QMenu* file = bar->addMenu(QStringLiteral("File"));
    item(file, QStringLiteral("New Window"), keys(Qt::CTRL | Qt::Key_N), "macwindow.badge.plus", frame,
        &BrowserFrame::newWindowRequested);
    file->addSeparator();
    item(file, QStringLiteral("Close Window"), keys(Qt::CTRL | Qt::Key_W), "xmark.circle.fill", frame,
        [frame] { frame->close(); });

    QMenu* view = bar->addMenu(QStringLiteral("View"));
    const std::pair<const char*, const char*> modes[] = {{"as Icons", "square.grid.2x2"}, {"as List", "list.bullet"},
        {"as Columns", "rectangle.split.3x1"}, {"as Peek", "square.stack"}};
    for (int i = 0; i < 4; ++i)
        item(view, QString::fromLatin1(modes[i].first), keys(Qt::CTRL | Qt::Key(Qt::Key_1 + i)), modes[i].second, frame,
            [frame, i] { frame->switchMode(ViewMode(i)); });
    item(view, QStringLiteral("Split View Right"), keys(Qt::CTRL | Qt::Key_D), "rectangle.split.2x1", frame,
        &BrowserFrame::addPane);
    item(view, QStringLiteral("Split View Down"), keys(Qt::CTRL | Qt::SHIFT | Qt::Key_D), "rectangle.split.1x2", frame,
        &BrowserFrame::splitPaneDown);
    item(view, QStringLiteral("Close Split"), keys(Qt::CTRL | Qt::SHIFT | Qt::Key_W), "xmark.circle.fill", frame,
        &BrowserFrame::closeActivePane);
    item(view, QStringLiteral("Link Panes (Cable)"), keys(Qt::CTRL | Qt::ALT | Qt::Key_L), "cable.connector", frame,
        &BrowserFrame::linkToggleActive);
    view->addSeparator();
    item(view, QStringLiteral("Refresh"), keys(Qt::CTRL | Qt::Key_R), "arrow.clockwise", frame,
        &BrowserFrame::refresh);

    QMenu* go = bar->addMenu(QStringLiteral("Go"));
    item(go, QStringLiteral("Back"), keys(Qt::CTRL | Qt::Key_BracketLeft), "chevron.left", frame,
        &BrowserFrame::goBack);
    item(go, QStringLiteral("Forward"), keys(Qt::CTRL | Qt::Key_BracketRight), "chevron.right", frame,
        &BrowserFrame::goForward);
    item(go, QStringLiteral("Enclosing Folder"), keys(Qt::CTRL | Qt::Key_Up), "arrow.up", frame, &BrowserFrame::goUp);
    item(go, QStringLiteral("Computer"), keys(Qt::CTRL | Qt::SHIFT | Qt::Key_C), "desktopcomputer", frame,
        &BrowserFrame::goComputer);

    QMenu* window = bar->addMenu(QStringLiteral("Window"));
    item(window, QStringLiteral("Minimize"), keys(Qt::CTRL | Qt::Key_M), "minus.square", frame,
        [frame] { frame->showMinimized(); });
    item(window, QStringLiteral("Zoom"), {}, "plus.square", frame,
        [frame] { frame->isMaximized() ? frame->showNormal() : frame->showMaximized(); });
}
