#pragma once
// New folders made on request: the first free "untitled folder" name in a folder.

#include <cstdint>
#include <optional>
#include <string>

// "untitled folder" for 1, then "untitled folder 2", "untitled folder 3", ...
std::string newFolderName(int64_t number);

// Creates the first free new-folder name in `folder`; its path, or nothing when the
// folder cannot be written (errno then tells why). Writes the disk: never on the UI
// thread.
std::optional<std::string> newFolderCreate(const std::string& folder);
