#include "fs/mount_table.h"

#include "fs/text_lines.h"

#include <sys/sysmacros.h>

namespace {

bool isOctal(char c) { return c >= '0' && c <= '7'; }

// The kernel writes space, tab, newline and backslash in a field as "\ooo".
std::string unescape(std::string_view field)
{
    std::string out;
    out.reserve(field.size());
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) && isOctal(field[i + 2])
            && isOctal(field[i + 3])) {
            int value = (field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0');
            if (value <= 0xff) {
                out.push_back(char(value));
                i += 3;
                continue;
            }
        }
        out.push_back(field[i]);
    }
    return out;
}

std::vector<std::string_view> splitFields(std::string_view line)
{
    std::vector<std::string_view> fields;
    size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r'))
            ++i;
        size_t start = i;
        while (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '\r')
            ++i;
        if (i > start)
            fields.push_back(line.substr(start, i - start));
    }
    return fields;
}

bool allDigits(std::string_view s)
{
    if (s.empty())
        return false;
    for (char c : s)
        if (c < '0' || c > '9')
            return false;
    return true;
}

// "8:17" into its two numbers.
bool parseDevice(std::string_view field, unsigned& major, unsigned& minor)
{
    const size_t colon = field.find(':');
    const std::string_view left = field.substr(0, colon), right = field.substr(colon + 1);
    if (colon == std::string_view::npos || !allDigits(left) || !allDigits(right) || left.size() > 9 || right.size() > 9)
        return false;
    major = unsigned(std::stoul(std::string(left)));
    minor = unsigned(std::stoul(std::string(right)));
    return true;
}

std::optional<MountRecord> parseLine(std::string_view line)
{
    // 0 id, 1 parent id, 2 major:minor, 3 root, 4 mount point, 5 options, then optional
    // fields ("shared:1", "master:2", ...) up to a lone "-", then type, source, super options.
    const std::vector<std::string_view> fields = splitFields(line);
    MountRecord record;
    unsigned major = 0, minor = 0;
    if (fields.size() < 9 || !allDigits(fields[0]) || !allDigits(fields[1]) || !parseDevice(fields[2], major, minor))
        return std::nullopt;
    record.device = makedev(major, minor);
    size_t separator = 6;
    while (separator < fields.size() && fields[separator] != "-")
        ++separator;
    if (separator + 2 >= fields.size())
        return std::nullopt;
    record.mountPoint = unescape(fields[4]);
    if (record.mountPoint.empty() || record.mountPoint[0] != '/')
        return std::nullopt;
    record.options = unescape(fields[5]);
    record.fsType = unescape(fields[separator + 1]);
    record.source = unescape(fields[separator + 2]);
    return record;
}

} // namespace

std::vector<MountRecord> mountTableParse(std::string_view text)
{
    std::vector<MountRecord> records;
    for (std::string_view line : textSplitLines(text))
        if (auto record = parseLine(line))
            records.push_back(std::move(*record));
    return records;
}
