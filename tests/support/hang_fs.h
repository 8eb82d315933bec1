#pragma once
// A mounted hangfs (tests/support/hangfs_main.cpp) for one test: a tiny FUSE tree whose
// chosen operations block until released, as a dead network share does.
//
//   HangFs fs(testHome() + "/media/Stuck");      // mounts (answering normally)
//   HANGFS_REQUIRE(fs);                           // GTEST_SKIP with the reason if FUSE
//                                                 // cannot be used here
//   fs.hang();                                    // listed operations now block
//   ...                                           // prove nothing waits on it
//   fs.release();                                 // blocked calls answer again
//
// The tree: notes.txt (12 bytes), a/ with one.txt (100 bytes) and deep/, b/. Its
// statfs reports 4,096,000 bytes in total, 1,024,000 free.
//
// The destructor releases, lazily unmounts (fusermount3 -u -z, or umount2 MNT_DETACH
// as root) and reaps the daemon, so a failing test never leaves a hung mount behind;
// the same clean-up runs from a handler for SIGINT, SIGTERM, SIGABRT and SIGSEGV, and
// the daemon dies with the test process (the kernel then fails the mount's calls
// instead of blocking them).

#include <string>
#include <sys/types.h>

class HangFs {
public:
    // `ops`: comma-separated operations that block once hang() is called: getattr,
    // readdir, statfs, open, read, opendir, readlink, access. Empty = all of them.
    explicit HangFs(std::string mountPoint, std::string ops = {});
    ~HangFs();
    HangFs(const HangFs&) = delete;
    HangFs& operator=(const HangFs&) = delete;

    // Whether the file system is mounted and answering; skipReason() says why not.
    bool mounted() const { return m_pid > 0; }
    const std::string& skipReason() const { return m_skipReason; }
    const std::string& mountPoint() const { return m_mountPoint; }

    void hang();
    void release();

    // Releases, unmounts and reaps now (the destructor does it otherwise).
    void unmount();

    // Why FUSE mounts cannot be made here (no /dev/fuse, no hangfs helper), or empty.
    static std::string unusableReason();

private:
    std::string m_mountPoint;
    std::string m_skipReason;
    pid_t m_pid = -1;
    int m_ackFd = -1; // the daemon writes one byte here per hang() or release()
};

#define HANGFS_REQUIRE(fs)                                                                                             \
    do {                                                                                                               \
        if (!(fs).mounted())                                                                                           \
            GTEST_SKIP() << "FUSE test file system unavailable: " << (fs).skipReason();                                \
    } while (0)
