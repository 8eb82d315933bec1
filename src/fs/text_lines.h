#pragma once
// Splitting text at "\n" for the small line-based readers (configuration files, the
// mount table, machine-info). A "\r" stays part of its line.

#include <string_view>
#include <vector>

std::vector<std::string_view> textSplitLines(std::string_view text);
