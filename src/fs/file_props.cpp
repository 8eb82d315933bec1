#include "fs/file_props.h"

#include "fs/sys_calls.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <vector>

namespace {

// A plain decimal id ("1000"); nothing for a name.
std::optional<unsigned> numericId(const std::string& text)
{
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::string userName(uid_t uid)
{
    std::vector<char> buf(16384);
    passwd pw{};
    passwd* found = nullptr;
    if (::getpwuid_r(uid, &pw, buf.data(), buf.size(), &found) == 0 && found)
        return found->pw_name;
    return std::to_string(uid);
}

std::string groupName(gid_t gid)
{
    std::vector<char> buf(16384);
    group gr{};
    group* found = nullptr;
    if (::getgrgid_r(gid, &gr, buf.data(), buf.size(), &found) == 0 && found)
        return found->gr_name;
    return std::to_string(gid);
}

// A user or group given by name or number; nothing when neither is known.
std::optional<uid_t> userId(const std::string& text)
{
    if (auto number = numericId(text))
        return uid_t(*number);
    std::vector<char> buf(16384);
    passwd pw{};
    passwd* found = nullptr;
    if (::getpwnam_r(text.c_str(), &pw, buf.data(), buf.size(), &found) == 0 && found)
        return found->pw_uid;
    return std::nullopt;
}

std::optional<gid_t> groupId(const std::string& text)
{
    if (auto number = numericId(text))
        return gid_t(*number);
    std::vector<char> buf(16384);
    group gr{};
    group* found = nullptr;
    if (::getgrnam_r(text.c_str(), &gr, buf.data(), buf.size(), &found) == 0 && found)
        return found->gr_gid;
    return std::nullopt;
}

} // namespace

FileProps FileProps::read(const std::string& path)
{
    FileProps props;
    props.info = FileInfo::gather(path);
    struct stat own{};
    if (sysCalls().lstat(path.c_str(), &own) != 0)
        return props;
    props.exists = true;
    props.isLink = S_ISLNK(own.st_mode);
    struct stat target = own;
    if (props.isLink) {
        char buf[4096];
        const ssize_t n = sysCalls().readlink(path.c_str(), buf, sizeof buf);
        if (n > 0)
            props.linkTarget.assign(buf, size_t(n));
        if (sysCalls().stat(path.c_str(), &target) != 0)
            target = own; // a dangling link: its own facts
    }
    props.isDir = S_ISDIR(target.st_mode);
    props.mode = target.st_mode & 07777;
    props.uid = own.st_uid;
    props.gid = own.st_gid;
    props.owner = userName(own.st_uid);
    props.group = groupName(own.st_gid);
    props.accessed = int64_t(target.st_atim.tv_sec);
    if (props.isDir)
        props.drive = driveSpace(path);
    return props;
}

unsigned permMask(PermWho who, PermBit bit)
{
    const unsigned shift = who == PermWho::Owner ? 6 : who == PermWho::Group ? 3 : 0;
    const unsigned value = bit == PermBit::Read ? 4 : bit == PermBit::Write ? 2 : 1;
    return value << shift;
}

unsigned permWith(unsigned mode, PermWho who, PermBit bit, bool on)
{
    return on ? mode | permMask(who, bit) : mode & ~permMask(who, bit);
}

std::string permSymbolic(unsigned mode)
{
    std::string out = "---------";
    const char letters[] = {'r', 'w', 'x'};
    for (int i = 0; i < 9; ++i)
        if (mode & (0400u >> i))
            out[size_t(i)] = letters[i % 3];
    // The special bits share the execute column: lower case when execute is set too.
    auto special = [&](unsigned bit, size_t column, char letter) {
        if (mode & bit)
            out[column] = out[column] == 'x' ? letter : char(letter - 'a' + 'A');
    };
    special(04000, 2, 's');
    special(02000, 5, 's');
    special(01000, 8, 't');
    return out;
}

std::string permAccessText(unsigned mode, PermWho who, bool isDir)
{
    const bool r = mode & permMask(who, PermBit::Read);
    const bool w = mode & permMask(who, PermBit::Write);
    const bool x = mode & permMask(who, PermBit::Execute);
    std::string text = r && w ? "Read and write" : r ? "Read only" : w ? "Write only" : "No access";
    if (x)
        text += isDir ? ", open" : ", run";
    else if (isDir && r)
        text += ", cannot open";
    return text;
}

std::optional<unsigned> permParseOctal(std::string_view text)
{
    if (text.empty() || text.size() > 4)
        return std::nullopt;
    unsigned mode = 0;
    for (char c : text) {
        if (c < '0' || c > '7')
            return std::nullopt;
        mode = mode * 8 + unsigned(c - '0');
    }
    return mode;
}

PermRights permRights(uid_t me, uid_t owner, bool isLink)
{
    PermRights rights;
    if (isLink)
        return rights;
    const bool root = me == 0;
    rights.mode = root || me == owner;
    rights.group = rights.mode;
    rights.owner = root;
    return rights;
}

std::vector<std::string> permUserGroups()
{
    std::vector<std::string> names{groupName(::getegid())};
    const int count = ::getgroups(0, nullptr);
    std::vector<gid_t> ids(size_t(std::max(count, 0)));
    if (count > 0 && ::getgroups(count, ids.data()) == count)
        for (gid_t id : ids)
            if (std::string name = groupName(id); std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(name);
    return names;
}

int permApplyMode(const std::string& path, unsigned mode)
{
    return sysCalls().chmod(path.c_str(), mode_t(mode & 07777)) == 0 ? 0 : errno;
}

int permApplyOwner(const std::string& path, const std::string& owner, const std::string& group)
{
    uid_t uid = uid_t(-1);
    gid_t gid = gid_t(-1);
    if (!owner.empty()) {
        auto id = userId(owner);
        if (!id)
            return EINVAL;
        uid = *id;
    }
    if (!group.empty()) {
        auto id = groupId(group);
        if (!id)
            return EINVAL;
        gid = *id;
    }
    return sysCalls().chown(path.c_str(), uid, gid) == 0 ? 0 : errno;
}
