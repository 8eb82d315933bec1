#pragma once
// The Computer root: the synthetic top of the navigation, listing Home and the mounted
// drives. Its path is "/", which in a window always means this node, never the
// file-system root.

#include "fs/dir_node.h"
#include "fs/volume.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ComputerRoot {
public:
    // The root for this machine: named after the host, Home first, then the volumes of
    // VolumeList::mounted() in their order. Waits for the volume probes (up to 3 s).
    static DirNodePtr build();

    // The same from given parts.
    static DirNodePtr build(const std::string& name, const std::string& home, const std::vector<Volume>& volumes);

    // The host's display name: PRETTY_HOSTNAME of /etc/machine-info, else the host
    // name, else "Computer".
    static std::string hostName();
};

// The value of `key` in shell-style "KEY=value" text (/etc/machine-info, os-release):
// comments and blank lines skipped, surrounding quotes removed, backslash escapes inside
// double quotes undone; the last assignment wins. Nothing when the key is absent.
std::optional<std::string> machineInfoValue(std::string_view text, std::string_view key);
