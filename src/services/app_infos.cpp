// GIO's headers name a member `signals`, which Qt's keyword macro would rewrite: they come
// before any Qt header, and only this file includes them.
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include "services/app_infos.h"

#include <QFile>
#include <QObject>

#include <algorithm>
#include <memory>

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using AppPtr = std::unique_ptr<GAppInfo, Unref>;

QString text(const char* utf8)
{
    return utf8 ? QString::fromUtf8(utf8) : QString();
}

// The message of `error`, which is freed; never empty.
QString takeError(GError* error)
{
    const QString message = error ? text(error->message) : QString();
    g_clear_error(&error);
    return message.isEmpty() ? QObject::tr("The desktop gave no reason.") : message;
}

QString iconOf(GAppInfo* app)
{
    GIcon* icon = g_app_info_get_icon(app); // not ours to free
    if (icon && G_IS_THEMED_ICON(icon)) {
        const gchar* const* names = g_themed_icon_get_names(G_THEMED_ICON(icon));
        return names && names[0] ? text(names[0]) : QString();
    }
    if (icon && G_IS_FILE_ICON(icon)) {
        char* path = g_file_get_path(g_file_icon_get_file(G_FILE_ICON(icon)));
        const QString out = path ? QFile::decodeName(path) : QString();
        g_free(path);
        return out;
    }
    return {};
}

// Adds the applications of `list` that are not in `out` yet; frees the list and its
// references.
void appendNew(std::vector<AppInfo>& out, GList* list, bool onlyShown = false)
{
    for (GList* item = list; item; item = item->next) {
        GAppInfo* app = G_APP_INFO(item->data);
        const QString id = text(g_app_info_get_id(app));
        if (id.isEmpty() || (onlyShown && !g_app_info_should_show(app))
            || std::any_of(out.begin(), out.end(), [&](const AppInfo& seen) { return seen.id == id; }))
            continue;
        out.push_back({id, text(g_app_info_get_name(app)), iconOf(app), false});
    }
    g_list_free_full(list, g_object_unref);
}

AppPtr appOf(const QString& id)
{
    return AppPtr(G_APP_INFO(g_desktop_app_info_new(id.toUtf8().constData())));
}

QString notInstalled(const QString& id)
{
    return QObject::tr("The application “%1” is not installed.").arg(id);
}

} // namespace

std::vector<AppInfo> AppInfos::forType(const QString& type)
{
    const QByteArray name = type.toUtf8();
    std::vector<AppInfo> out;
    if (AppPtr app{g_app_info_get_default_for_type(name.constData(), FALSE)}) {
        appendNew(out, g_list_prepend(nullptr, app.release()));
        if (!out.empty())
            out.front().isDefault = true;
    }
    appendNew(out, g_app_info_get_recommended_for_type(name.constData()));
    appendNew(out, g_app_info_get_fallback_for_type(name.constData()));
    return out;
}

std::vector<AppInfo> AppInfos::all()
{
    std::vector<AppInfo> out;
    appendNew(out, g_app_info_get_all(), true);
    std::sort(out.begin(), out.end(), [](const AppInfo& a, const AppInfo& b) { return a.name.localeAwareCompare(b.name) < 0; });
    return out;
}

QString AppInfos::setDefault(const QString& type, const QString& id)
{
    const AppPtr app = appOf(id);
    if (!app)
        return notInstalled(id);
    GError* error = nullptr;
    if (!g_app_info_set_as_default_for_type(app.get(), type.toUtf8().constData(), &error))
        return takeError(error);
    return {};
}

QString AppInfos::launch(const QString& id, const std::vector<std::string>& paths)
{
    const AppPtr app = appOf(id);
    if (!app)
        return notInstalled(id);
    GList* uris = nullptr;
    for (const std::string& path : paths)
        if (char* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr))
            uris = g_list_append(uris, uri);
    GError* error = nullptr;
    const bool started = g_app_info_launch_uris(app.get(), uris, nullptr, &error);
    g_list_free_full(uris, g_free);
    return started ? QString() : takeError(error);
}
