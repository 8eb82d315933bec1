// The source tree keeps its layers: a folder includes only folders below it, and no two
// files include each other, directly or through others. Read from the sources, so a new
// upward include fails here rather than in review.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

namespace {

// Lower rank: lower layer. A folder may include its own and lower ranks only. fs and
// config share a rank: fs may read the plain settings record.
const std::map<std::string, int> kRank = {
    {"fs", 0}, {"config", 0}, {"sizes", 1}, {"ops", 1}, {"cards", 2}, {"app", 3},
    {"services", 4}, {"views", 5}, {"window", 6}, {"actions", 7},
};

// Each unit (a header and its .cpp) and the units it includes.
std::map<std::string, std::set<std::string>> includeGraph(const fs::path& src)
{
    std::map<std::string, std::set<std::string>> graph;
    const std::regex include(R"re(#include "([a-z_]+/[a-z_0-9]+)\.h")re");
    for (const auto& entry : fs::recursive_directory_iterator(src)) {
        const fs::path& path = entry.path();
        if (path.extension() != ".h" && path.extension() != ".cpp")
            continue;
        const std::string unit = fs::relative(path, src).replace_extension().string();
        std::ifstream in(path);
        std::stringstream text;
        text << in.rdbuf();
        const std::string body = text.str();
        auto& out = graph[unit];
        for (std::sregex_iterator it(body.begin(), body.end(), include), end; it != end; ++it)
            if ((*it)[1] != unit)
                out.insert((*it)[1]);
    }
    return graph;
}

std::string folderOf(const std::string& unit)
{
    return unit.substr(0, unit.find('/'));
}

} // namespace

TEST(Layering, FoldersIncludeDownwardsAndUnitsNeverInALoop)
{
    const fs::path src = fs::path(BRONDEL_SOURCE_DIR) / "src";
    ASSERT_TRUE(fs::is_directory(src));
    const auto graph = includeGraph(src);
    ASSERT_GT(graph.size(), 50u);
    for (const auto& [unit, includes] : graph) {
        const std::string from = folderOf(unit);
        if (!kRank.count(from))
            continue; // main.cpp wires everything
        for (const std::string& target : includes) {
            const std::string to = folderOf(target);
            ASSERT_TRUE(kRank.count(to)) << unit << " includes " << target;
            EXPECT_LE(kRank.at(to), kRank.at(from)) << unit << " includes " << target << " from a layer above";
        }
    }
    // Depth-first search for a unit reached again while still on the path.
    std::map<std::string, int> state; // 1 on the path, 2 done
    std::vector<std::string> path;
    std::function<void(const std::string&)> visit = [&](const std::string& unit) {
        state[unit] = 1;
        path.push_back(unit);
        auto it = graph.find(unit);
        if (it != graph.end())
            for (const std::string& next : it->second) {
                if (!graph.count(next))
                    continue;
                if (state[next] == 1) {
                    std::string loop;
                    for (auto p = std::find(path.begin(), path.end(), next); p != path.end(); ++p)
                        loop += *p + " -> ";
                    ADD_FAILURE() << "include loop: " << loop << next;
                } else if (state[next] == 0) {
                    visit(next);
                }
            }
        path.pop_back();
        state[unit] = 2;
    };
    for (const auto& [unit, includes] : graph)
        if (state[unit] == 0)
            visit(unit);
}
