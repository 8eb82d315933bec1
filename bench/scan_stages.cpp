// scan_stages FOLDER [RUNS] [STAGES]: the stages of reading one large folder, timed
// apart (best of RUNS, default 3; STAGES a list such as "sort,names", default all), for
// finding where a listing's time goes (wall time, and CPU time of all threads):
//   read      getdents and copying the names, as the scanner reads a folder;
//   sort      the name sort of those names (keys and comparisons);
//   names     the whole names-first read the windows make (read, sort, records);
//   full      the whole read with every entry's status, as `brondel list` makes it.

#include "fs/dir_fd.h"
#include "fs/node_store.h"
#include "fs/scanner.h"
#include "fs/sort_nodes.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

double seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

double cpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

struct Time {
    double wall = 0, cpu = 0;
};

// The fastest of `runs` runs of `stage`; `prepare` runs untimed before each.
template <typename Stage, typename Prepare = void (*)()>
Time best(int runs, Stage&& stage, Prepare prepare = [] {})
{
    Time fastest{1e9, 1e9};
    for (int i = 0; i < runs; ++i) {
        prepare();
        const auto start = std::chrono::steady_clock::now();
        const double cpu = cpuSeconds();
        stage();
        fastest.wall = std::min(fastest.wall, seconds(start));
        fastest.cpu = std::min(fastest.cpu, cpuSeconds() - cpu);
    }
    return fastest;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: scan_stages FOLDER [RUNS]\n", stdout);
        return 2;
    }
    const std::string folder = argv[1];
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
    const std::string stages = argc > 3 ? argv[3] : "read,sort,names,full";
    auto wanted = [&](const char* stage) { return stages.find(stage) != std::string::npos; };
    BrondelSettings settings;

    std::string names;
    std::vector<uint32_t> starts;
    const Time read = best(runs, [&] {
        names.clear();
        starts.clear();
        std::vector<char> buffer(64 * 1024);
        const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0)
            return;
        dirForEachEntry(fd, buffer, [&](const char* name, unsigned char) {
            starts.push_back(uint32_t(names.size()));
            names.append(name, std::strlen(name) + 1);
        });
        close(fd);
    });
    SortColumns columns;
    for (uint32_t at : starts) {
        columns.names.emplace_back(names.data() + at);
        columns.dirs.push_back(0);
    }
    size_t sorted = 0;
    Time sort, namesFirst, full;
    if (wanted("sort"))
        sort = best(runs, [&] { sorted = sortOrder(columns, SortPlace::Folder, settings).size(); });
    // The stores are let go of outside the timing, as the windows let go of them later.
    NodeStorePtr kept;
    auto release = [&] { kept.reset(); };
    if (wanted("names"))
        namesFirst = best(runs, [&] { kept = Scanner(settings).scanStore(folder, 1, ScanMeta::NamesFirst); }, release);
    const size_t records = kept ? kept->root().childCount : 0;
    if (wanted("full"))
        full = best(runs, [&] { kept = Scanner(settings).scanStore(folder, 1, ScanMeta::Full); }, release);
    std::printf("%zu entries (%zu sorted, %zu records), best of %d; wall / CPU seconds\n", starts.size(), sorted,
        records, runs);
    auto line = [](const char* label, Time t) { std::printf("  %-6s %.3f / %.3f\n", label, t.wall, t.cpu); };
    line("read", read);
    line("sort", sort);
    line("names", namesFirst);
    line("full", full);
    return 0;
}
