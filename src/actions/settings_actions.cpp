#include "actions/settings_actions.h"

#include "actions/context_actions.h"
#include "config/settings_file.h"
#include "sizes/info_module.h"
#include "services/browser_context.h"

#include <QMenu>

#include <functional>

void SettingsActions::change(const BrowserContext& context, const std::function<void(BrondelSettings&)>& apply)
{
    // Only what this change touched reaches the file: it is read again, so a setting
    // changed meanwhile by `brondel infos` or by hand stays.
    BrondelSettings& settings = Settings::current();
    const BrondelSettings before = settings;
    apply(settings);
    ContextActions::edit(context, [before, after = settings] {
        settingsUpdate(before, after);
        return true;
    });
}

bool SettingsActions::infoIsOn(const BrondelSettings& settings, const std::string& key)
{
    for (const InfoModule* module : InfoModules::enabled(settings))
        if (module->key() == key)
            return true;
    return false;
}

namespace {

template <typename Act>
void checkItem(QMenu& menu, const QString& title, bool checked, Act act)
{
    QAction* action = menu.addAction(title);
    action->setCheckable(true);
    action->setChecked(checked);
    QObject::connect(action, &QAction::triggered, action, act);
}

} // namespace

void SettingsActions::toggleHidden(const BrowserContext& context)
{
    change(context, [](BrondelSettings& s) { s.showHidden = !s.showHidden; });
}

void SettingsActions::toggleFoldersFirst(const BrowserContext& context)
{
    change(context, [](BrondelSettings& s) { s.foldersFirst = !s.foldersFirst; });
}

void SettingsActions::toggleAscending(const BrowserContext& context)
{
    change(context, [](BrondelSettings& s) { s.ascending = !s.ascending; });
}

void SettingsActions::setSort(const BrowserContext& context, const std::string& key)
{
    change(context, [&key](BrondelSettings& s) { s.sortBy = key; });
}

void SettingsActions::sortByColumn(const BrowserContext& context, const std::string& key)
{
    change(context, [&key](BrondelSettings& s) {
        s.ascending = s.sortBy == key ? !s.ascending : true;
        s.sortBy = key;
    });
}

void SettingsActions::toggleInfo(const BrowserContext& context, const std::string& key)
{
    change(context, [&key](BrondelSettings& s) { s.infoOn[key] = !infoIsOn(s, key); });
}

void SettingsActions::sortMenuFill(QMenu& menu, const BrowserContext& context)
{
    menu.clear();
    const BrondelSettings& settings = Settings::current();
    const std::pair<const char*, const char*> keys[] = {{QT_TR_NOOP("Name"), "name"},
        {QT_TR_NOOP("Date Modified"), "date"}, {QT_TR_NOOP("Size"), "size"}, {QT_TR_NOOP("Kind"), "kind"}};
    const BrowserContext* where = &context;
    for (const auto& [title, key] : keys)
        checkItem(menu, QObject::tr(title), settings.sortBy == key,
            [where, key = std::string(key)] { setSort(*where, key); });
    menu.addSeparator();
    checkItem(menu, QObject::tr("Ascending"), settings.ascending, [where] { toggleAscending(*where); });
    checkItem(menu, QObject::tr("Folders First"), settings.foldersFirst, [where] { toggleFoldersFirst(*where); });
}

void SettingsActions::infoMenuFill(QMenu& menu, const BrowserContext& context)
{
    menu.clear();
    const BrondelSettings& settings = Settings::current();
    const BrowserContext* where = &context;
    for (const auto& module : InfoModules::all())
        checkItem(menu, QString::fromStdString(module->title()), infoIsOn(settings, module->key()),
            [where, key = module->key()] { toggleInfo(*where, key); });
}
