#include "services/view_modes.h"

#include <QCoreApplication>

const std::array<ViewModeItem, 4>& viewModeItems()
{
    static const std::array<ViewModeItem, 4> items = {{
        {ViewMode::Icon, QT_TRANSLATE_NOOP("ViewModes", "Icons"), QT_TRANSLATE_NOOP("ViewModes", "as Icons"),
            "square.grid.2x2", Shortcut::AsIcons},
        {ViewMode::List, QT_TRANSLATE_NOOP("ViewModes", "List"), QT_TRANSLATE_NOOP("ViewModes", "as List"),
            "list.bullet", Shortcut::AsList},
        {ViewMode::Column, QT_TRANSLATE_NOOP("ViewModes", "Columns"), QT_TRANSLATE_NOOP("ViewModes", "as Columns"),
            "rectangle.split.3x1", Shortcut::AsColumns},
        {ViewMode::Peek, QT_TRANSLATE_NOOP("ViewModes", "Peek"), QT_TRANSLATE_NOOP("ViewModes", "as Peek"),
            "square.stack", Shortcut::AsPeek},
    }};
    return items;
}

QString viewModeName(const ViewModeItem& item)
{
    return QCoreApplication::translate("ViewModes", item.name);
}

QString viewModeMenuTitle(const ViewModeItem& item)
{
    return QCoreApplication::translate("ViewModes", item.menuTitle);
}
