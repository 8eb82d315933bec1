#pragma once
// A window's display mode, in menu order (Ctrl+1 to Ctrl+4).

enum class ViewMode { Icon, List, Column, Peek };
