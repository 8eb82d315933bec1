#include "fs/text_lines.h"

std::vector<std::string_view> textSplitLines(std::string_view text)
{
    std::vector<std::string_view> lines;
    size_t start = 0;
    for (;;) {
        size_t nl = text.find('\n', start);
        if (nl == std::string_view::npos) {
            lines.push_back(text.substr(start));
            return lines;
        }
        lines.push_back(text.substr(start, nl - start));
        start = nl + 1;
    }
}
