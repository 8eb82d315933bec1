// palette.toml has no writer: any bytes parse, and a title's fallback hue is always one
// of the palette's own.

#include "config/palette.h"
#include "fuzz_check.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text = fuzzText(data, size);
    const Palette palette = paletteParse(text);
    for (const PaletteEntry& entry : palette)
        FUZZ_CHECK(!entry.name.empty());
    if (palette.empty())
        return 0;
    const double hue = paletteHueForTitle(text.substr(0, 64), palette);
    FUZZ_CHECK(std::any_of(palette.begin(), palette.end(), [&](const PaletteEntry& e) { return e.hue == hue; }));
    return 0;
}
