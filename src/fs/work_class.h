#pragma once
// How urgent a background thread's work is. The UI thread must win the CPU whenever it
// has something to draw: a folder read the user asked for comes next, then listings of
// drives, and folder-size walks last. On Linux this is the thread's nice value (which
// threads it creates inherit); the work still uses every idle core.

enum class WorkClass { UserInitiated, Utility, Background };

// Lowers the calling thread to `work`'s priority. A thread's priority only goes down
// (an unprivileged process cannot raise it again), so a pool's threads take one class.
void threadSetWorkClass(WorkClass work);

// The nice value a class maps to.
int workClassNice(WorkClass work);
