#include "window/window_hooks.h"

WindowHooks& windowHooks()
{
    static WindowHooks hooks;
    return hooks;
}
