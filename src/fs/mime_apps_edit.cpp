#include "fs/mime_apps_edit.h"

#include "fs/file_io.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <vector>

namespace {

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

bool isGroup(std::string_view line)
{
    line = trimmed(line);
    return line.size() >= 2 && line.front() == '[' && line.back() == ']';
}

std::vector<std::string> splitList(std::string_view value)
{
    std::vector<std::string> ids;
    while (!value.empty()) {
        const size_t semicolon = value.find(';');
        const std::string_view id = trimmed(value.substr(0, semicolon));
        if (!id.empty())
            ids.emplace_back(id);
        value = semicolon == std::string_view::npos ? std::string_view() : value.substr(semicolon + 1);
    }
    return ids;
}

// Changes the list of `type` in `group` with `change`; an empty list removes the key.
void editList(std::vector<std::string>& lines, std::string_view group, std::string_view type,
    const std::function<void(std::vector<std::string>&)>& change)
{
    const std::string header = "[" + std::string(group) + "]";
    auto start = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) { return trimmed(line) == header; });
    std::vector<std::string> ids;
    if (start == lines.end()) {
        change(ids);
        if (ids.empty())
            return;
        if (!lines.empty() && !trimmed(lines.back()).empty())
            lines.emplace_back();
        lines.push_back(header);
        start = lines.end() - 1;
    }
    auto end = std::find_if(start + 1, lines.end(), [](const std::string& line) { return isGroup(line); });
    auto key = std::find_if(start + 1, end, [&](const std::string& line) {
        const size_t equals = line.find('=');
        return equals != std::string::npos && trimmed(std::string_view(line).substr(0, equals)) == type;
    });
    if (key != end)
        ids = splitList(std::string_view(*key).substr(key->find('=') + 1));
    change(ids);
    std::string value;
    for (const std::string& id : ids)
        value += id + ";";
    if (key != end) {
        if (ids.empty())
            lines.erase(key);
        else
            *key = std::string(type) + "=" + value;
        return;
    }
    if (ids.empty())
        return;
    // After the group's last entry, before the blank lines that end it.
    auto at = end;
    while (at != start + 1 && trimmed(*(at - 1)).empty())
        --at;
    lines.insert(at, std::string(type) + "=" + value);
}

} // namespace

std::string mimeAppsWithDefault(std::string_view text, std::string_view type, std::string_view id)
{
    std::vector<std::string> lines;
    for (std::string_view rest = text; !rest.empty();) {
        const size_t newline = rest.find('\n');
        lines.emplace_back(rest.substr(0, newline));
        rest = newline == std::string_view::npos ? std::string_view() : rest.substr(newline + 1);
    }
    const std::string app(id);
    auto first = [&](std::vector<std::string>& ids) {
        ids.erase(std::remove(ids.begin(), ids.end(), app), ids.end());
        ids.insert(ids.begin(), app);
    };
    editList(lines, "Default Applications", type, first);
    editList(lines, "Added Associations", type, first);
    editList(lines, "Removed Associations", type,
        [&](std::vector<std::string>& ids) { ids.erase(std::remove(ids.begin(), ids.end(), app), ids.end()); });
    std::string out;
    for (const std::string& line : lines)
        out += line + "\n";
    return out;
}

int mimeAppsSetDefault(const std::string& path, std::string_view type, std::string_view id)
{
    const FileContent old = fileReadWhole(path);
    if (!old.bytes && old.error != ENOENT)
        return old.error; // never replace what could not be read
    errno = 0;
    if (!fileWriteAtomic(path, mimeAppsWithDefault(old.bytes.value_or(""), type, id)))
        return errno ? errno : EIO;
    return 0;
}
