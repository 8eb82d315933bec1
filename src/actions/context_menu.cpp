#include "actions/context_menu.h"

#include "actions/context_actions.h"
#include "window/brondel_window.h"

#include <QMenu>
#include <QPointer>

namespace {

// The path of the Recent section's header node.
constexpr const char* kRecentHeaderPath = "pinned://Recent";

// An item whose action runs on the pane, as long as the pane still exists.
template <typename Act>
QAction* item(QMenu& menu, const QString& title, BrondelWindow& pane, Act act)
{
    QAction* action = menu.addAction(title);
    QPointer<BrondelWindow> where(&pane);
    QObject::connect(action, &QAction::triggered, action, [where, act] {
        if (where)
            act(*where);
    });
    return action;
}

} // namespace

void contextMenuFill(QMenu& menu, BrondelWindow& pane, const DirNodePtr& node)
{
    if (!node)
        contextBackgroundFill(menu, pane);
    else if (node->isSectionHeader)
        contextSectionFill(menu, pane, *node);
    else
        contextFill(menu, pane, node);
}

void contextFill(QMenu& menu, BrondelWindow& pane, const DirNodePtr& node)
{
    menu.clear();
    const std::string path = node->path;
    item(menu, QStringLiteral("Open"), pane, [node](BrondelWindow& p) { ContextActions::open(p, *node); });
    menu.addSeparator();
    item(menu, QStringLiteral("Reveal in Finder"), pane, [path](BrondelWindow& p) { ContextActions::reveal(p, path); });
    item(menu, QStringLiteral("Copy Path"), pane, [path](BrondelWindow&) { ContextActions::copyPath(path); });
    menu.addSeparator();
    item(menu, QStringLiteral("Move to Trash"), pane, [path](BrondelWindow& p) { ContextActions::trash(p, {path}); });
}

void contextSectionFill(QMenu& menu, BrondelWindow& pane, const DirNode& header)
{
    menu.clear();
    if (header.path == kRecentHeaderPath) {
        item(menu, QStringLiteral("Clear Recents"), pane, [](BrondelWindow& p) { ContextActions::recentsClearAction(p); });
        return;
    }
    const std::string section = header.name;
    item(menu, QStringLiteral("Add Folders\u2026"), pane,
        [section](BrondelWindow& p) { ContextActions::sectionAddFolders(p, section); });
    item(menu, QStringLiteral("Rename Section\u2026"), pane,
        [section](BrondelWindow& p) { ContextActions::sectionRename(p, section); });
    item(menu, QStringLiteral("Move Section Up"), pane,
        [section](BrondelWindow& p) { ContextActions::sectionShift(p, section, -1); });
    item(menu, QStringLiteral("Move Section Down"), pane,
        [section](BrondelWindow& p) { ContextActions::sectionShift(p, section, +1); });
    menu.addSeparator();
    item(menu, QStringLiteral("New Section\u2026"), pane, [](BrondelWindow& p) { ContextActions::sectionNew(p); });
    item(menu, QStringLiteral("Remove Section"), pane,
        [section](BrondelWindow& p) { ContextActions::sectionDelete(p, section); });
}

void contextBackgroundFill(QMenu& menu, BrondelWindow& pane)
{
    menu.clear();
    const bool folder = !pane.isComputerRoot();
    item(menu, QStringLiteral("New Folder"), pane, [](BrondelWindow& p) { ContextActions::newFolder(p); })
        ->setEnabled(folder);
    item(menu, QStringLiteral("New Favorites Section\u2026"), pane, [](BrondelWindow& p) { ContextActions::sectionNew(p); });
    item(menu, QStringLiteral("Add This Folder to Favorites"), pane,
        [](BrondelWindow& p) { ContextActions::favAddCurrent(p); })
        ->setEnabled(folder);
    // The favourites manager window does not exist yet.
    menu.addAction(QStringLiteral("Manage Favorites\u2026"))->setEnabled(false);
    item(menu, QStringLiteral("Refresh"), pane, [](BrondelWindow& p) { ContextActions::refreshView(p); });
}
