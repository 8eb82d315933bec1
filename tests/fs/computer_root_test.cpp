#include "fs/computer_root.h"

#include <gtest/gtest.h>

#include <tuple>

TEST(ComputerRoot, MachineInfoValues)
{
    const struct {
        const char* text;
        std::optional<std::string> expected;
    } cases[] = {
        {"PRETTY_HOSTNAME=\"Ann's Laptop\"\n", "Ann's Laptop"},
        {"PRETTY_HOSTNAME='Studio \"B\"'", "Studio \"B\""},
        {"PRETTY_HOSTNAME=plain\r\n", "plain"},
        {"PRETTY_HOSTNAME=\"say \\\"hi\\\" \\\\o/\"", "say \"hi\" \\o/"},
        {"# PRETTY_HOSTNAME=commented\nCHASSIS=laptop\n", std::nullopt},
        {"PRETTY_HOSTNAME_EXTRA=no\nXPRETTY_HOSTNAME=no", std::nullopt},
        {"PRETTY_HOSTNAME=first\nPRETTY_HOSTNAME=second", "second"},
        {"PRETTY_HOSTNAME=", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(machineInfoValue(c.text, "PRETTY_HOSTNAME"), c.expected) << c.text;
}

TEST(ComputerRoot, HomeFirstThenDrivesWithUsedSpace)
{
    const std::vector<Volume> volumes = {{"Zip", "/mnt/Zip", 1000, 400}, {"Backup", "/media/a/Backup", 50, 50}};
    const DirNodePtr root = ComputerRoot::build("Ann's PC", "/home/ann", volumes);
    EXPECT_EQ(std::tie(root->name, root->path, root->isDir, root->childrenLoaded, root->size),
              std::make_tuple("Ann's PC", "/", true, true, 0));
    std::vector<std::tuple<std::string, std::string, int64_t, bool, bool>> children;
    for (const DirNodePtr& child : root->children)
        children.emplace_back(child->name, child->path, child->size, child->isDir, child->childrenLoaded);
    EXPECT_EQ(children, (decltype(children){{"Home", "/home/ann", 0, true, false},
                                            {"Zip", "/mnt/Zip", 600, true, false},
                                            {"Backup", "/media/a/Backup", 0, true, false}}));
}
