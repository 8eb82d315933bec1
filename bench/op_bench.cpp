// Runs one file operation synchronously, for bench/run to time against cp -a and mv.
//   op_bench copy DEST_FOLDER SOURCE...   copies the sources into DEST_FOLDER
//   op_bench move-all FROM_FOLDER DEST_FOLDER   moves every entry of FROM_FOLDER
// Exits 1 when anything failed or asked a question (the destination must be free).

#include "fs/dir_fd.h"
#include "fs/sys_calls.h"
#include "ops/op_copy.h"
#include "ops/op_engine.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

class Refusing : public OpObserver {
public:
    bool asked = false;
    OpConflictAnswer askConflict(const OpConflict&) override
    {
        asked = true;
        return {ConflictChoice::Cancel, ConflictScope::AllItems};
    }
    ErrorChoice askError(const OpError&) override
    {
        asked = true;
        return ErrorChoice::Cancel;
    }
};

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4)
        return 2;
    OpRequest request;
    if (std::strcmp(argv[1], "copy") == 0) {
        request.kind = OpKind::Copy;
        request.targetDir = argv[2];
        for (int i = 3; i < argc; ++i)
            request.sources.emplace_back(argv[i]);
    } else if (std::strcmp(argv[1], "move-all") == 0) {
        request.kind = OpKind::Move;
        request.targetDir = argv[3];
        const std::string from = argv[2];
        int fd = sysOpen(from.c_str(), O_RDONLY | O_DIRECTORY);
        if (fd < 0)
            return 1;
        DirFd dir(fd);
        std::vector<char> buffer(size_t(64) << 10);
        dirForEachEntry(dir.fd(), buffer, [&](const char* name, unsigned char) {
            request.sources.push_back(opJoin(from, name));
        });
    } else {
        return 2;
    }
    OpControl control;
    Refusing observer;
    const OpResult result = opRun(request, control, observer);
    return result.status == OpStatus::Done && !observer.asked ? 0 : 1;
}
