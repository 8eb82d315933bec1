#pragma once
// Moving one item to the user's Trash and reporting where it went. The command line and
// the GUI's "Move to Trash" actions share this operation. Nothing is ever deleted: the
// item is renamed into the Trash or stays where it is.

#include <optional>
#include <string>

class TrashOp {
public:
    struct Result {
        std::string path;      // the path as given
        std::string trashedTo; // the item's path inside the Trash
    };

    // A Result, or the errno of the failure.
    struct Outcome {
        std::optional<Result> result;
        int error = 0;
        explicit operator bool() const { return result.has_value(); }
    };

    // Shown as `trashedTo` when the platform reports no resulting location.
    static constexpr const char* kNoLocation = "~/.Trash/";

    // Moves the item at `path` (relative to the working directory when relative; no tilde
    // expansion) to the Trash.
    static Outcome trash(const std::string& path);

    // The C library's description of an error, e.g. "No such file or directory".
    static std::string describe(int error);
};
