#include "actions/management_windows.h"

#include "actions/favorites_manager.h"
#include "actions/settings_window.h"

#include <QPointer>

namespace {

template <typename Window>
void showOne(QPointer<Window>& open, QWidget* parent, const BrowserContext& context)
{
    if (!open) {
        open = new Window(context, parent);
        open->setAttribute(Qt::WA_DeleteOnClose);
    }
    open->show();
    open->raise();
    open->activateWindow();
}

} // namespace

void settingsWindowShow(QWidget* parent, const BrowserContext& context)
{
    static QPointer<SettingsWindow> open;
    showOne(open, parent, context);
}

void favoritesManagerShow(QWidget* parent, const BrowserContext& context)
{
    static QPointer<FavoritesManager> open;
    showOne(open, parent, context);
}
