// The actions answer the windows' hooks (window/window_hooks.h) as soon as the GUI
// library is loaded, before any window exists.

#include "actions/context_actions.h"
#include "actions/context_menu.h"
#include "actions/file_actions.h"
#include "actions/menu_setup.h"
#include "actions/properties_window.h"
#include "actions/settings_actions.h"
#include "window/window_hooks.h"

namespace {

const bool g_installed = [] {
    WindowHooks& hooks = windowHooks();
    hooks.installMenus = [](BrowserFrame& frame) { MenuSetup::install(&frame); };
    hooks.fillContextMenu = [](QMenu& menu, BrondelWindow& pane, const DirNodePtr& node) {
        contextMenuFill(menu, pane, node);
    };
    hooks.trash = [](BrondelWindow& pane, std::vector<std::string> paths) {
        ContextActions::trash(pane, std::move(paths));
    };
    hooks.rename = [](BrondelWindow& pane, const std::string& path, const std::string& newName) {
        FileActions::rename(pane, path, newName);
    };
    hooks.drop = [](BrondelWindow& pane, std::vector<std::string> paths, const std::string& folder) {
        FileActions::drop(pane, std::move(paths), folder);
    };
    hooks.openFile = [](QWidget* parent, const std::string& path) { ContextActions::openFile(parent, path); };
    hooks.sortByColumn = [](const BrowserContext& context, const std::string& key) {
        SettingsActions::sortByColumn(context, key);
    };
    hooks.peekOrderChanged = [] { MenuSetup::refreshPeekStyle(); };
    hooks.showProperties = [](const BrowserContext& context, QObject* owner, std::vector<std::string> paths) {
        propertiesShow(paths, context, owner);
    };
    return true;
}();

} // namespace
