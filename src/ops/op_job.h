#pragma once
// One running file operation: the walk over its items, the questions it asks, its
// progress, and the steps it records for undo. opRun and opUndo drive it; nothing else
// sees it.

#include "ops/op_copy.h"
#include "ops/op_engine.h"

#include <chrono>
#include <optional>
#include <string>
#include <sys/stat.h>

class OpJob {
public:
    OpJob(OpControl& control, OpObserver& observer, OpRecord* record);

    OpResult run(const OpRequest& request);

    // Moves `from` to the free path `to`: a rename, or across devices a copy whose
    // sources are removed as each copy completes. Parents of `to` are made first.
    // 0 or an errno.
    int movePath(const std::string& from, const std::string& to);
    // Moves `path` to the Trash; where it went in `trashedTo`. 0 or an errno.
    int trash(const std::string& path, std::string& trashedTo);
    // Brings `trashed` back to `to` and removes its record `infoPath`. 0 or an errno.
    int restoreTo(const std::string& trashed, const std::string& infoPath, const std::string& to);

    const OpResult& result() const { return m_result; }

private:
    enum class Flow { Ok, Skipped, Stop };
    enum class Mode { Copy, MoveAcross };

    template <typename Call>
    Flow attempt(const std::string& path, Call call);
    // Reads the item about to be worked on (the user may retry or skip when it fails).
    Flow reach(const std::string& source, struct stat& st);
    ConflictChoice resolve(const std::string& source, const struct stat& st, std::string& target,
                           const struct stat& existing);
    std::string freeName(const std::string& target, bool isDir) const;
    int trashAside(const std::string& target);
    bool checkpoint();
    void tick(bool force = false);
    void count(const std::string& path);
    void note(OpStepKind kind, const std::string& from, const std::string& to);

    Flow copyItem(const std::string& source, const std::string& targetDir, const std::string& name, Mode mode,
                  bool record);
    Flow copyFolder(const std::string& source, const struct stat& st, const std::string& target, Mode mode,
                    bool merge, bool replace, bool record);
    Flow moveItem(const std::string& source, const std::string& targetDir, const std::string& name);
    Flow restoreItem(const std::string& trashed);

    OpResult runCopyOrMove(const OpRequest& request);
    OpResult runRename(const OpRequest& request);
    OpResult runNewFolder(const OpRequest& request);
    // Deleting for good (op_delete.cpp): every item through the descriptor of its folder.
    void runDelete(const OpRequest& request);
    Flow removeAt(int dirFd, const std::string& dirPath, const std::string& name, dev_t device);

    OpControl& m_control;
    OpObserver& m_observer;
    OpRecord* m_record;
    OpOnError m_onError = OpOnError::Ask;
    OpResult m_result;
    OpProgress m_progress;
    std::string m_placed; // where the item last finished went (a top-level one, once its walk returns)
    uint64_t m_questions = 0;
    std::optional<ConflictChoice> m_allFiles;   // "apply to all" answers
    std::optional<ConflictChoice> m_allFolders;
    std::chrono::steady_clock::time_point m_lastTick;
    std::chrono::steady_clock::time_point m_rateMark; // when the rate was last measured
    uint64_t m_lastBytes = 0;                         // bytesDone then
};

// Runs `call` (0 or an errno) until it works, or the user skips or stops the item after
// a failure; a job that skips without asking lists the item and goes on.
template <typename Call>
OpJob::Flow OpJob::attempt(const std::string& path, Call call)
{
    for (;;) {
        if (!checkpoint())
            return Flow::Stop;
        const int error = call();
        if (error == 0)
            return Flow::Ok;
        if (m_control.cancelled())
            return Flow::Stop;
        const ErrorChoice choice =
            m_onError == OpOnError::Skip ? ErrorChoice::Skip : m_observer.askError({++m_questions, path, error});
        if (choice == ErrorChoice::Retry)
            continue;
        if (m_result.error == 0)
            m_result.error = error;
        m_result.failed.push_back({path, error});
        if (choice == ErrorChoice::Skip) {
            ++m_result.skipped;
            return Flow::Skipped;
        }
        m_control.cancel();
        return Flow::Stop;
    }
}
