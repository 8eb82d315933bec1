#include "fs/work_class.h"

#include <sys/resource.h>
#include <unistd.h>

int workClassNice(WorkClass work)
{
    switch (work) {
    case WorkClass::UserInitiated: return 2;
    case WorkClass::Utility: return 5;
    case WorkClass::Background: return 10;
    }
    return 0;
}

void threadSetWorkClass(WorkClass work)
{
    // On Linux the nice value belongs to the thread named by its id.
    const id_t self = id_t(::gettid());
    const int wanted = workClassNice(work);
    if (::getpriority(PRIO_PROCESS, self) < wanted)
        ::setpriority(PRIO_PROCESS, self, wanted);
}
