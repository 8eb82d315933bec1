#include "fs/trash_op.h"

#include "fs/trash_op_linux.h"

#include <cstring>
#include <ctime>

TrashOp::Outcome TrashOp::trash(const std::string& path)
{
    TrashMove move = trashMoveLinux(path, std::time(nullptr));
    if (move.error != 0)
        return {std::nullopt, move.error};
    return {Result{path, move.trashedTo.empty() ? std::string(kNoLocation) : move.trashedTo}, 0};
}

std::string TrashOp::describe(int error)
{
    if (error == kTrashErrorInTrash)
        return "The item is in the Trash already";
    char buf[256];
    // The GNU strerror_r returns the text, which need not be in buf.
    return ::strerror_r(error, buf, sizeof buf);
}
