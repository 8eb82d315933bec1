#pragma once
// The order of the Peek styles (the user's arrangement saved by Peek mode's Rearrange
// bar, then every other style in default order) and the remembered current style.

#include "config/lab_variant.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Every quoted string after the first "names" anywhere in the text; nothing when the
// text has no "names".
std::vector<std::string> peekOrderParse(std::string_view text);

// The order file in its fixed layout.
std::string peekOrderFormat(const std::vector<std::string>& names);

// The titles saved in peekOrderPath() (empty when it cannot be read).
std::vector<std::string> peekOrderLoad();

// Writes the order file. Errors are absorbed; the result only tells tests.
bool peekOrderSave(const std::vector<std::string>& names);

// The styles whose titles are saved (exact match, in saved order, unknown titles
// skipped, a repeated title repeated), then every other style in default order.
std::vector<const LabVariant*> peekOrderApply(const std::vector<std::string>& saved);

// peekOrderApply(peekOrderLoad()): the order of the style bar, the menu and the command.
std::vector<const LabVariant*> peekOrderedTypes();

// The title of the style last chosen, from the user defaults.
std::optional<std::string> peekStyleCurrent();

// Remembers `title` as the current style at once.
void peekStyleSetCurrent(const std::string& title);
