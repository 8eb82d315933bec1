#include "fs/new_folder.h"

#include "fs/sys_calls.h"

#include <cerrno>

namespace {

constexpr int64_t kNewFolderTries = 10000;

} // namespace

std::string newFolderName(int64_t number)
{
    std::string name = "untitled folder";
    return number <= 1 ? name : name + " " + std::to_string(number);
}

std::optional<std::string> newFolderCreate(const std::string& folder)
{
    // mkdir itself decides which name is free, so two quick requests never collide.
    for (int64_t number = 1; number <= kNewFolderTries; ++number) {
        std::string path = folder + (folder.ends_with('/') ? "" : "/") + newFolderName(number);
        int result;
        do
            result = sysCalls().mkdir(path.c_str(), 0777);
        while (result != 0 && errno == EINTR);
        if (result == 0)
            return path;
        if (errno != EEXIST)
            return std::nullopt;
    }
    return std::nullopt;
}
