#include "fs/background_release.h"

WorkPool& backgroundReleasePool()
{
    // Never destroyed: quitting must not wait for frees the operating system does anyway.
    static auto* pool = new WorkPool(1, WorkClass::Background);
    return *pool;
}
