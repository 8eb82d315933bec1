#include "fs/computer_root.h"

#include "fs/text_lines.h"

#include "fs/file_io.h"
#include "fs/paths.h"
#include "fs/volume_list.h"

#include <climits>
#include <unistd.h>

namespace {

std::string_view trimmed(std::string_view text)
{
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string unquoted(std::string_view value)
{
    if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'')
        return std::string(value.substr(1, value.size() - 2));
    if (value.size() < 2 || value.front() != '"' || value.back() != '"')
        return std::string(value);
    value = value.substr(1, value.size() - 2);
    std::string out;
    for (size_t i = 0; i < value.size(); ++i) {
        const bool escape = value[i] == '\\' && i + 1 < value.size()
            && std::string_view("\"\\$`").find(value[i + 1]) != std::string_view::npos;
        if (escape)
            ++i;
        out.push_back(value[i]);
    }
    return out;
}

} // namespace

std::optional<std::string> machineInfoValue(std::string_view text, std::string_view key)
{
    std::optional<std::string> value;
    for (std::string_view raw : textSplitLines(text)) {
        const std::string_view line = trimmed(raw);
        const size_t equals = line.find('=');
        if (line.empty() || line.front() == '#' || line.front() == ';' || equals == std::string_view::npos)
            continue;
        if (trimmed(line.substr(0, equals)) == key)
            value = unquoted(trimmed(line.substr(equals + 1)));
    }
    return value;
}

std::string ComputerRoot::hostName()
{
    if (auto text = fileReadAll("/etc/machine-info"))
        if (auto pretty = machineInfoValue(*text, "PRETTY_HOSTNAME"); pretty && !pretty->empty())
            return *pretty;
    char name[HOST_NAME_MAX + 1] = {};
    if (::gethostname(name, sizeof name - 1) == 0 && name[0])
        return name;
    return "Computer";
}

DirNodePtr ComputerRoot::build()
{
    return build(hostName(), homeDir(), VolumeList::mounted());
}

DirNodePtr ComputerRoot::build(const std::string& name, const std::string& home, const std::vector<Volume>& volumes)
{
    DirNodePtr root = DirNode::make();
    root->name = name;
    root->path = "/";
    root->isDir = true;
    root->childrenLoaded = true;

    DirNodePtr homeNode = DirNode::make();
    homeNode->name = "Home";
    homeNode->path = home;
    homeNode->isDir = true;
    root->children.push_back(homeNode);

    for (const Volume& volume : volumes) {
        DirNodePtr drive = DirNode::make();
        drive->name = volume.name;
        drive->path = volume.path;
        drive->isDir = true;
        drive->size = volume.usedBytes();
        root->children.push_back(drive);
    }
    return root;
}
