#include "fs/desktop_apps.h"

#include "fs/dir_fd.h"
#include "fs/file_io.h"
#include "fs/sys_calls.h"

#include <QByteArray>
#include <QDir>
#include <QSet>
#include <QUrl>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

// Calls each(group, key, value) for every "key=value" line, with the group it is in.
template <typename Each>
void iniForEach(std::string_view text, Each&& each)
{
    std::string_view group;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
            line.remove_suffix(1);
        while (!line.empty() && (line.front() == ' ' || line.front() == '\t'))
            line.remove_prefix(1);
        if (line.empty() || line.front() == '#')
            continue;
        if (line.front() == '[') {
            group = line.back() == ']' ? line.substr(1, line.size() - 2) : std::string_view();
            continue;
        }
        const size_t eq = line.find('=');
        if (eq == std::string_view::npos)
            continue;
        std::string_view key = line.substr(0, eq);
        std::string_view value = line.substr(eq + 1);
        while (!key.empty() && (key.back() == ' ' || key.back() == '\t'))
            key.remove_suffix(1);
        while (!value.empty() && (value.front() == ' ' || value.front() == '\t'))
            value.remove_prefix(1);
        if (!key.empty())
            each(group, key, value);
    }
}

QString textOf(std::string_view bytes)
{
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

// Undoes the escapes of a string value: \s \n \t \r \\ (and "\;" when splitting lists,
// which the caller handles).
QString unescapeValue(std::string_view value)
{
    std::string out;
    out.reserve(value.size());
    for (size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const char next = value[++i];
        switch (next) {
        case 's': out += ' '; break;
        case 'n': out += '\n'; break;
        case 't': out += '\t'; break;
        case 'r': out += '\r'; break;
        case '\\': out += '\\'; break;
        default: out += '\\'; out += next; break;
        }
    }
    return textOf(out);
}

// A list value: items separated by ';' ("\;" is a semicolon inside an item).
QStringList listValue(std::string_view value)
{
    QStringList items;
    std::string item;
    for (size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size() && value[i + 1] == ';') {
            item += ';';
            ++i;
        } else if (value[i] == ';') {
            if (!item.empty())
                items << unescapeValue(item);
            item.clear();
        } else {
            item += value[i];
        }
    }
    if (!item.empty())
        items << unescapeValue(item);
    for (QString& entry : items)
        entry = entry.trimmed();
    items.removeAll(QString());
    return items;
}

// The forms of a locale to try, most specific first: lang_COUNTRY@MOD, lang_COUNTRY,
// lang@MOD, lang (the encoding is never part of the key).
QStringList localeKeys(const QString& locale)
{
    QString rest = locale;
    QString modifier;
    if (const qsizetype at = rest.indexOf('@'); at >= 0) {
        modifier = rest.mid(at);
        rest.truncate(at);
    }
    if (const qsizetype dot = rest.indexOf('.'); dot >= 0)
        rest.truncate(dot);
    if (rest.isEmpty() || rest == QLatin1String("C") || rest == QLatin1String("POSIX"))
        return {};
    QString lang = rest;
    QString country;
    if (const qsizetype underscore = rest.indexOf('_'); underscore >= 0) {
        lang = rest.left(underscore);
        country = rest.mid(underscore);
    }
    QStringList keys;
    if (!country.isEmpty() && !modifier.isEmpty())
        keys << lang + country + modifier;
    if (!country.isEmpty())
        keys << lang + country;
    if (!modifier.isEmpty())
        keys << lang + modifier;
    keys << lang;
    return keys;
}

bool isTrue(std::string_view value)
{
    return value == "true" || value == "1";
}

// Splits an Exec value into arguments. Nothing when a quote is left open.
std::optional<QStringList> execSplit(const QString& exec)
{
    QStringList args;
    QString current;
    bool inArg = false;
    bool quoted = false;
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const QChar c = exec[i];
        if (quoted) {
            if (c == '"') {
                quoted = false;
            } else if (c == '\\' && i + 1 < exec.size() && QStringView(u"\"`$\\").contains(exec[i + 1])) {
                current += exec[++i];
            } else {
                current += c;
            }
        } else if (c == ' ' || c == '\t' || c == '\n') {
            if (inArg)
                args << current;
            current.clear();
            inArg = false;
        } else if (c == '"') {
            quoted = true;
            inArg = true;
        } else {
            current += c;
            inArg = true;
        }
    }
    if (quoted)
        return std::nullopt;
    if (inArg)
        args << current;
    return args;
}

QString urlOf(const QString& path)
{
    return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
}

// One argument with its codes replaced; `file` is the file for %f / %u (none: they
// expand to nothing).
QString expandCodes(const QString& arg, const DesktopApp& app, const QString* file)
{
    QString out;
    for (qsizetype i = 0; i < arg.size(); ++i) {
        if (arg[i] != '%' || i + 1 == arg.size()) {
            out += arg[i];
            continue;
        }
        const QChar code = arg[++i];
        if (code == '%')
            out += '%';
        else if (code == 'f' && file)
            out += *file;
        else if (code == 'u' && file)
            out += urlOf(*file);
        else if (code == 'c')
            out += app.name;
        else if (code == 'k')
            out += app.path;
        // %F %U inside a longer argument, %i there, and the deprecated codes: nothing.
    }
    return out;
}

} // namespace

std::optional<DesktopApp> desktopEntryParse(std::string_view text, const QString& id, const QString& locale)
{
    DesktopApp app;
    app.id = id;
    const QStringList keys = localeKeys(locale);
    int nameRank = 1 << 20; // lower is better; the plain Name ranks after every locale key
    bool isApplication = false;
    bool hidden = false;
    iniForEach(text, [&](std::string_view group, std::string_view key, std::string_view value) {
        if (group != "Desktop Entry")
            return;
        if (key == "Type") {
            isApplication = value == "Application";
        } else if (key == "Exec") {
            app.exec = unescapeValue(value);
        } else if (key == "Icon") {
            app.icon = unescapeValue(value);
        } else if (key == "MimeType") {
            app.mimeTypes = listValue(value);
        } else if (key == "Terminal") {
            app.terminal = isTrue(value);
        } else if (key == "NoDisplay") {
            app.noDisplay = isTrue(value);
        } else if (key == "Hidden") {
            hidden = isTrue(value);
        } else if (key == "Name") {
            if (nameRank > int(keys.size())) {
                app.name = unescapeValue(value);
                nameRank = int(keys.size());
            }
        } else if (key.substr(0, 5) == "Name[" && key.back() == ']') {
            const int rank = int(keys.indexOf(textOf(key.substr(5, key.size() - 6))));
            if (rank >= 0 && rank < nameRank) {
                app.name = unescapeValue(value);
                nameRank = rank;
            }
        }
    });
    if (!isApplication || hidden || app.exec.trimmed().isEmpty() || app.name.isEmpty())
        return std::nullopt;
    return app;
}

MimeAppsList mimeAppsParse(std::string_view text)
{
    MimeAppsList list;
    iniForEach(text, [&](std::string_view group, std::string_view key, std::string_view value) {
        QHash<QString, QStringList>* into = group == "Default Applications" ? &list.defaults
            : group == "Added Associations"                                ? &list.added
            : group == "Removed Associations"                              ? &list.removed
                                                                           : nullptr;
        if (into)
            (*into)[textOf(key)] += listValue(value);
    });
    return list;
}

QHash<QString, QStringList> mimeInfoCacheParse(std::string_view text)
{
    QHash<QString, QStringList> cache;
    iniForEach(text, [&](std::string_view group, std::string_view key, std::string_view value) {
        if (group == "MIME Cache")
            cache[textOf(key)] += listValue(value);
    });
    return cache;
}

QStringList desktopAppsFor(const DesktopAppIndex& index, const QStringList& types)
{
    QStringList found;
    QSet<QString> seen;
    auto take = [&](const QString& id) {
        if (index.apps.contains(id) && !seen.contains(id)) {
            seen.insert(id);
            found << id;
        }
    };
    // The default: the first installed one a list names for the nearest type, unless
    // that same list or a more important one removes it.
    QString chosen;
    for (const QString& type : types) {
        QSet<QString> removed;
        for (const MimeAppsList& list : index.lists) {
            removed.unite(QSet<QString>(list.removed.value(type).cbegin(), list.removed.value(type).cend()));
            for (const QString& id : list.defaults.value(type))
                if (chosen.isEmpty() && index.apps.contains(id) && !removed.contains(id))
                    chosen = id;
        }
        if (!chosen.isEmpty())
            break;
    }
    if (!chosen.isEmpty())
        take(chosen);
    for (const QString& type : types) {
        // An association a list adds stands against the removals of less important lists
        // only: walking from the most important, the removals accumulate.
        QSet<QString> removed;
        for (const MimeAppsList& list : index.lists) {
            for (const QString& id : list.added.value(type))
                if (!removed.contains(id))
                    take(id);
            const QStringList gone = list.removed.value(type);
            removed.unite(QSet<QString>(gone.cbegin(), gone.cend()));
        }
        int ranks = int(index.caches.size());
        for (const DesktopApp& app : index.apps)
            ranks = std::max(ranks, app.dirRank + 1);
        for (int rank = 0; rank < ranks; ++rank) {
            if (size_t(rank) < index.caches.size())
                for (const QString& id : index.caches[size_t(rank)].value(type))
                    if (!removed.contains(id))
                        take(id);
            for (const QString& id : index.appOrder) {
                const DesktopApp& app = index.apps[id];
                if (app.dirRank == rank && !removed.contains(id) && app.mimeTypes.contains(type))
                    take(id);
            }
        }
    }
    return found;
}

std::vector<QStringList> desktopExecCommands(const DesktopApp& app, const QStringList& paths)
{
    const std::optional<QStringList> split = execSplit(app.exec);
    if (!split || split->isEmpty())
        return {};
    bool perFile = false;
    for (const QString& arg : *split)
        if (arg != QLatin1String("%F") && arg != QLatin1String("%U")
            && (arg.contains(QLatin1String("%f")) || arg.contains(QLatin1String("%u"))))
            perFile = true;
    auto build = [&](const QString* file) {
        QStringList command;
        for (const QString& arg : *split) {
            if (arg == QLatin1String("%F")) {
                command << paths;
            } else if (arg == QLatin1String("%U")) {
                for (const QString& path : paths)
                    command << urlOf(path);
            } else if (arg == QLatin1String("%i")) {
                if (!app.icon.isEmpty())
                    command << QStringLiteral("--icon") << app.icon;
            } else if ((arg == QLatin1String("%f") || arg == QLatin1String("%u")) && !file) {
                // no file: the argument goes away rather than becoming empty
            } else {
                command << expandCodes(arg, app, file);
            }
        }
        return command;
    };
    std::vector<QStringList> commands;
    if (perFile && !paths.isEmpty()) {
        for (const QString& path : paths)
            commands.push_back(build(&path));
    } else {
        commands.push_back(build(nullptr));
    }
    commands.erase(std::remove_if(commands.begin(), commands.end(), [](const QStringList& c) { return c.isEmpty() || c.front().isEmpty(); }),
                   commands.end());
    return commands;
}

DesktopAppDirs desktopAppDirsFrom(const QString& home, const QString& configHome, const QString& configDirs,
                                  const QString& dataHome, const QString& dataDirs)
{
    // Relative values are invalid and ignored, like unset ones.
    auto absolute = [](const QStringList& dirs) {
        QStringList kept;
        for (const QString& dir : dirs)
            if (dir.startsWith('/'))
                kept << QDir::cleanPath(dir);
        return kept;
    };
    DesktopAppDirs dirs;
    const QString configHomeDir = configHome.startsWith('/') ? configHome : home + QStringLiteral("/.config");
    const QString dataHomeDir = dataHome.startsWith('/') ? dataHome : home + QStringLiteral("/.local/share");
    QStringList configList = absolute(configDirs.split(':', Qt::SkipEmptyParts));
    if (configList.isEmpty())
        configList << QStringLiteral("/etc/xdg");
    QStringList dataList = absolute(dataDirs.split(':', Qt::SkipEmptyParts));
    if (dataList.isEmpty())
        dataList << QStringLiteral("/usr/local/share") << QStringLiteral("/usr/share");
    dirs.configDirs << QDir::cleanPath(configHomeDir) << configList;
    dirs.dataDirs << QDir::cleanPath(dataHomeDir) << dataList;
    dirs.configDirs.removeDuplicates();
    dirs.dataDirs.removeDuplicates();
    return dirs;
}

DesktopAppDirs desktopAppDirsFromEnvironment()
{
    auto env = [](const char* name) { return qEnvironmentVariable(name); };
    return desktopAppDirsFrom(env("HOME"), env("XDG_CONFIG_HOME"), env("XDG_CONFIG_DIRS"), env("XDG_DATA_HOME"),
                              env("XDG_DATA_DIRS"));
}

namespace {

bool isFolder(const std::string& path)
{
    struct stat st {};
    return sysCalls().stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Reads the entries below `dir`, ids prefixed by `prefix` (a subfolder "kde/x.desktop"
// is "kde-x.desktop"). Links are followed, four folders deep at most.
void loadEntries(const std::string& dir, const QString& prefix, int depth, const QString& locale, int rank,
    DesktopAppIndex& index)
{
    const int fd = sysOpen(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    DirFd folder(fd);
    std::vector<char> buffer(size_t(64) << 10);
    std::vector<std::pair<std::string, unsigned char>> names;
    dirForEachEntry(folder.fd(), buffer, [&](const char* name, unsigned char type) { names.emplace_back(name, type); });
    std::sort(names.begin(), names.end());
    for (const auto& [name, type] : names) {
        const std::string path = dir + '/' + name;
        const QString id = prefix + QString::fromUtf8(name.data(), qsizetype(name.size()));
        if (name.size() > 8 && name.compare(name.size() - 8, 8, ".desktop") == 0) {
            if (index.apps.contains(id))
                continue; // a more important folder has this id
            if (const auto text = fileReadAll(path)) {
                if (auto app = desktopEntryParse(*text, id, locale)) {
                    app->path = QString::fromUtf8(path.data(), qsizetype(path.size()));
                    app->dirRank = rank;
                    index.apps.insert(id, *app);
                    index.appOrder << id;
                }
            }
        } else if (depth < 4 && (type == DT_DIR || ((type == DT_LNK || type == DT_UNKNOWN) && isFolder(path)))) {
            loadEntries(path, id + '-', depth + 1, locale, rank, index);
        }
    }
}

std::string bytesOf(const QString& text)
{
    return text.toUtf8().toStdString();
}

} // namespace

DesktopAppIndex desktopAppsLoad(const DesktopAppDirs& dirs, const QString& locale)
{
    DesktopAppIndex index;
    for (const QString& dir : dirs.configDirs)
        if (const auto text = fileReadAll(bytesOf(dir) + "/mimeapps.list"))
            index.lists.push_back(mimeAppsParse(*text));
    for (const QString& dir : dirs.dataDirs) {
        const std::string apps = bytesOf(dir) + "/applications";
        if (const auto text = fileReadAll(apps + "/mimeapps.list"))
            index.lists.push_back(mimeAppsParse(*text));
        const auto cache = fileReadAll(apps + "/mimeinfo.cache");
        index.caches.push_back(cache ? mimeInfoCacheParse(*cache) : QHash<QString, QStringList>());
        loadEntries(apps, QString(), 0, locale, int(index.caches.size()) - 1, index);
    }
    return index;
}
