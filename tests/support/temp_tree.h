#pragma once
// Real temporary trees for tests: files, folders, links, odd names and modes.

#include <cstdint>
#include <string>

class TempTree {
public:
    TempTree();  // a fresh directory under the test home
    ~TempTree(); // restores permissions and moves the tree out of the way

    const std::string& root() const { return m_root; }
    std::string path(const std::string& rel) const { return m_root + "/" + rel; }

    // Each creates missing parent folders and returns the full path.
    std::string dir(const std::string& rel);
    std::string file(const std::string& rel, const std::string& content = "");
    std::string sized(const std::string& rel, int64_t size); // sparse file of that length
    std::string symlink(const std::string& rel, const std::string& target);
    std::string hardlink(const std::string& rel, const std::string& existingRel);
    void chmod(const std::string& rel, unsigned mode);
    void setMtime(const std::string& rel, int64_t seconds, long nanoseconds = 0);

private:
    std::string m_root;
};
