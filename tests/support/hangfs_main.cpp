// hangfs: a tiny FUSE file system whose chosen operations stop answering on request,
// the way a dead network share or a wedged USB bridge behaves. Tests mount it to prove
// that no command, walk or exit waits on such a drive.
//
//   hangfs [--hang=getattr,readdir,...] [--ack-fd=N] <mount point>
//
// It runs in the foreground, multithreaded, named "hangfs" (type "fuse.hangfs" in the
// mount table). The tree is fixed:
//   /notes.txt (12 bytes)  /a/  /a/one.txt (100 bytes)  /a/deep/  /b/
// Signals steer it (each acknowledged with one byte on the --ack-fd descriptor):
//   SIGUSR2  start hanging: the listed operations block (all of them when no --hang)
//   SIGUSR1  release: blocked operations answer and new ones are answered at once
//   SIGTERM/SIGINT  quit: blocked operations fail with EIO and the loop ends
// The process dies with its parent (a crashed test never leaves a live daemon behind;
// the kernel then fails the mount's calls instead of blocking them).

#define FUSE_USE_VERSION 312

#include <fuse.h>
#include <fuse_lowlevel.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

enum Op : unsigned {
    kGetattr = 1u << 0,
    kReaddir = 1u << 1,
    kStatfs = 1u << 2,
    kOpen = 1u << 3,
    kRead = 1u << 4,
    kOpendir = 1u << 5,
    kReadlink = 1u << 6,
    kAccess = 1u << 7,
};

struct OpName {
    std::string_view name;
    unsigned bit;
};
constexpr OpName kOps[] = {
    {"getattr", kGetattr}, {"readdir", kReaddir}, {"statfs", kStatfs},   {"open", kOpen},
    {"read", kRead},       {"opendir", kOpendir}, {"readlink", kReadlink}, {"access", kAccess},
};

unsigned g_hangSet = ~0u;
std::atomic<bool> g_hanging{false};
std::atomic<bool> g_quit{false};

int g_ackFd = -1; // the fixture reads one byte per signal, so hang() and release() are synchronous

void acknowledge()
{
    if (g_ackFd >= 0) {
        const char byte = 'k';
        [[maybe_unused]] const ssize_t n = ::write(g_ackFd, &byte, 1);
    }
}
void onRelease(int)
{
    g_hanging = false;
    acknowledge();
}
void onHang(int)
{
    g_hanging = true;
    acknowledge();
}
fuse_session* g_session = nullptr;

// Runs on the loop's main thread (libfuse blocks signals in its workers); ending the
// session makes the loop return, and the flag lets blocked calls fail at once.
void onQuit(int)
{
    g_quit = true;
    g_hanging = false;
    if (g_session)
        fuse_session_exit(g_session);
}

// Blocks while the operation is set to hang; false when the daemon is quitting.
bool gate(unsigned op)
{
    if (!(g_hangSet & op))
        return true;
    const timespec tick{0, 20 * 1000 * 1000};
    while (g_hanging.load() && !g_quit.load())
        ::nanosleep(&tick, nullptr);
    return !g_quit.load();
}

struct Node {
    const char* path;
    bool dir;
    off_t size;
};
constexpr Node kTree[] = {
    {"/", true, 0},       {"/notes.txt", false, 12}, {"/a", true, 0},
    {"/a/one.txt", false, 100}, {"/a/deep", true, 0}, {"/b", true, 0},
};

const Node* find(const char* path)
{
    for (const Node& n : kTree)
        if (std::strcmp(n.path, path) == 0)
            return &n;
    return nullptr;
}

// The direct children of `dir`, by name.
template <class F> void eachChild(std::string_view dir, F&& f)
{
    const std::string prefix = dir == "/" ? "/" : std::string(dir) + "/";
    for (const Node& n : kTree) {
        std::string_view p = n.path;
        if (p.size() <= prefix.size() || !p.starts_with(prefix))
            continue;
        std::string_view rest = p.substr(prefix.size());
        if (rest.find('/') == std::string_view::npos)
            f(std::string(rest).c_str(), n);
    }
}

void fillStat(const Node& n, struct stat* st)
{
    std::memset(st, 0, sizeof *st);
    st->st_mode = n.dir ? (S_IFDIR | 0755) : (S_IFREG | 0644);
    st->st_nlink = n.dir ? 2 : 1;
    st->st_size = n.size;
    st->st_uid = ::getuid();
    st->st_gid = ::getgid();
    st->st_mtime = st->st_atime = st->st_ctime = 1700000000;
}

int hfGetattr(const char* path, struct stat* st, fuse_file_info*)
{
    if (!gate(kGetattr))
        return -EIO;
    const Node* n = find(path);
    if (!n)
        return -ENOENT;
    fillStat(*n, st);
    return 0;
}

int hfAccess(const char* path, int)
{
    if (!gate(kAccess))
        return -EIO;
    return find(path) ? 0 : -ENOENT;
}

int hfReadlink(const char*, char*, size_t)
{
    if (!gate(kReadlink))
        return -EIO;
    return -EINVAL;
}

int hfOpendir(const char* path, fuse_file_info*)
{
    if (!gate(kOpendir))
        return -EIO;
    const Node* n = find(path);
    return !n ? -ENOENT : n->dir ? 0 : -ENOTDIR;
}

int hfReaddir(const char* path, void* buf, fuse_fill_dir_t fill, off_t, fuse_file_info*, fuse_readdir_flags)
{
    if (!gate(kReaddir))
        return -EIO;
    fill(buf, ".", nullptr, 0, fuse_fill_dir_flags(0));
    fill(buf, "..", nullptr, 0, fuse_fill_dir_flags(0));
    eachChild(path, [&](const char* name, const Node& n) {
        struct stat st;
        fillStat(n, &st);
        fill(buf, name, &st, 0, fuse_fill_dir_flags(0));
    });
    return 0;
}

int hfOpen(const char* path, fuse_file_info*)
{
    if (!gate(kOpen))
        return -EIO;
    const Node* n = find(path);
    return !n ? -ENOENT : n->dir ? -EISDIR : 0;
}

int hfRead(const char* path, char* buf, size_t size, off_t offset, fuse_file_info*)
{
    if (!gate(kRead))
        return -EIO;
    const Node* n = find(path);
    if (!n || n->dir)
        return -ENOENT;
    if (offset >= n->size)
        return 0;
    const size_t count = std::min<size_t>(size, size_t(n->size - offset));
    std::memset(buf, 'x', count);
    return int(count);
}

int hfStatfs(const char*, struct statvfs* st)
{
    if (!gate(kStatfs))
        return -EIO;
    std::memset(st, 0, sizeof *st);
    st->f_bsize = st->f_frsize = 4096;
    st->f_blocks = 1000;
    st->f_bfree = st->f_bavail = 250;
    st->f_namemax = 255;
    return 0;
}

void* hfInit(fuse_conn_info*, fuse_config* cfg)
{
    // Nothing cached in the kernel: every stat reaches the daemon, so a hang is a hang.
    cfg->entry_timeout = 0;
    cfg->attr_timeout = 0;
    cfg->negative_timeout = 0;
    return nullptr;
}

unsigned parseOps(std::string_view list)
{
    unsigned set = 0;
    while (!list.empty()) {
        const size_t comma = list.find(',');
        const std::string_view word = list.substr(0, comma);
        for (const OpName& op : kOps)
            if (op.name == word)
                set |= op.bit;
        list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
    }
    return set;
}

} // namespace

int main(int argc, char** argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    std::string mountPoint;
    for (int i = 1; i < argc; ++i) {
        std::string_view arg = argv[i];
        if (arg.starts_with("--hang="))
            g_hangSet = arg.size() > 7 ? parseOps(arg.substr(7)) : ~0u;
        else if (arg.starts_with("--ack-fd="))
            g_ackFd = std::atoi(argv[i] + 9);
        else
            mountPoint = argv[i];
    }
    if (mountPoint.empty()) {
        std::fprintf(stderr, "usage: hangfs [--hang=getattr,readdir,statfs,open,read,opendir] <mount point>\n");
        return 2;
    }

    fuse_operations ops{};
    ops.getattr = hfGetattr;
    ops.access = hfAccess;
    ops.readlink = hfReadlink;
    ops.opendir = hfOpendir;
    ops.readdir = hfReaddir;
    ops.open = hfOpen;
    ops.read = hfRead;
    ops.statfs = hfStatfs;
    ops.init = hfInit;

    char arg0[] = "hangfs";
    char optFlag[] = "-o";
    char opts[] = "fsname=hangfs,subtype=hangfs,default_permissions";
    char* fuseArgv[] = {arg0, optFlag, opts, nullptr};
    fuse_args args = FUSE_ARGS_INIT(3, fuseArgv);
    fuse* fs = fuse_new(&args, &ops, sizeof ops, nullptr);
    if (!fs)
        return 1;
    if (fuse_mount(fs, mountPoint.c_str()) != 0) {
        fuse_destroy(fs);
        return 1;
    }
    g_session = fuse_get_session(fs);
    struct sigaction sa{};
    sa.sa_handler = onQuit;
    for (int sig : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(sig, &sa, nullptr);
    sa.sa_handler = onRelease;
    ::sigaction(SIGUSR1, &sa, nullptr);
    sa.sa_handler = onHang;
    ::sigaction(SIGUSR2, &sa, nullptr);

    fuse_loop_config* config = fuse_loop_cfg_create();
    fuse_loop_cfg_set_max_threads(config, 64); // every blocked call holds one thread
    fuse_loop_cfg_set_idle_threads(config, 8);
    const int rc = fuse_loop_mt(fs, config);
    fuse_loop_cfg_destroy(config);
    g_quit = true;
    fuse_unmount(fs);
    fuse_destroy(fs);
    return rc == 0 ? 0 : 1;
}
