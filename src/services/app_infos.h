#pragma once
// The desktop's applications and the file types they open, as the desktop's own library
// (GIO) knows them from the desktop entries and mimeapps.list files. Answers are plain
// values. Every call may read the disk (the index is read on first use and again after a
// change): call from a background pool, never the UI thread.

#include <QString>

#include <string>
#include <vector>

struct AppInfo {
    QString id;   // "org.example.Editor.desktop"
    QString name; // in the user's language when the entry has it
    QString icon; // a theme icon name, or an absolute file path
    bool isDefault = false;
};

struct AppInfos {
    // The applications for `type`: its default first, then those that name it, then
    // those that take a broader type; each once.
    static std::vector<AppInfo> forType(const QString& type);
    // Every application offered to the user (the chooser), sorted by name.
    static std::vector<AppInfo> all();
    // Makes `id` the default application of `type` (the user's mimeapps.list). Empty, or
    // why it failed.
    static QString setDefault(const QString& type, const QString& id);
    // Starts `id` with `paths` (absolute, in the file system's encoding). Empty, or why it
    // could not be started.
    static QString launch(const QString& id, const std::vector<std::string>& paths);
};
