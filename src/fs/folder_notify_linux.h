#pragma once
// The kernel's notices of changes in one folder (inotify), as a descriptor that becomes
// readable when something changed.
//
// What is asked of the kernel depends on the folder's size. Entries created, removed or
// renamed are noticed in every folder. Changes inside the entries (a file written and
// closed, a date or permission changed) are noticed only in folders of up to some tens
// of thousands of entries: asking for them makes the kernel mark every entry of the
// folder it holds in memory, one by one, under the folder's own lock. For a million
// entries that is some 80 ms in which any look-up of the folder (its drive's free space,
// a second pane) spins on a processor, and a small machine's UI thread finds none free.

#include <cstdint>
#include <string>

// The events asked for on a folder whose own size (st_size) is `folderBytes`.
uint32_t folderNotifyMask(int64_t folderBytes);

// A non-blocking descriptor that notices changes in the folder `path`, or -1 (not a
// folder, gone, or the system is out of watches). Looking the path up may hang on a
// drive that does not answer: call it where only that thread waits.
int folderNotifyOpen(const std::string& path);

// Reads every notice waiting on `fd`; whether there was any.
bool folderNotifyDrain(int fd);
