#include "config/peek_order.h"

#include "config/config_file.h"
#include "config/config_text.h"
#include "config/user_defaults.h"

#include <algorithm>

namespace {
const char* const kStyleKey = "brondel.peekStyle";
}

std::vector<std::string> peekOrderParse(std::string_view text)
{
    size_t names = text.find("names");
    if (names == std::string_view::npos)
        return {};
    // The rest of the file, lines and all: the quotes pair up across line breaks.
    return configQuotedStrings(text.substr(names));
}

std::string peekOrderFormat(const std::vector<std::string>& names)
{
    std::string out = "# Brondel Cmd+4 Peek style order \u2014 written by Rearrange \u2192 Done.\n"
                      "# Styles not listed appear after these, in default order.\n"
                      "names = [\n";
    for (const std::string& name : names)
        out += "  \"" + name + "\",\n";
    out += "]\n";
    return out;
}

std::vector<std::string> peekOrderLoad()
{
    auto text = configRead(peekOrderPath());
    return text ? peekOrderParse(*text) : std::vector<std::string>{};
}

bool peekOrderSave(const std::vector<std::string>& names)
{
    return configRewrite(peekOrderPath(), peekOrderFormat(names), {}).status == ConfigWriteStatus::Written;
}

std::vector<const LabVariant*> peekOrderApply(const std::vector<std::string>& saved)
{
    const std::vector<const LabVariant*> all = labVariantTypes();
    std::vector<const LabVariant*> ordered;
    auto taken = [&](const LabVariant* v) { return std::find(ordered.begin(), ordered.end(), v) != ordered.end(); };
    for (const std::string& title : saved) {
        auto match = std::find_if(all.begin(), all.end(), [&](const LabVariant* v) { return v->title() == title; });
        if (match != all.end()) // a title saved twice is listed twice, as the file says
            ordered.push_back(*match);
    }
    for (const LabVariant* v : all)
        if (!taken(v))
            ordered.push_back(v);
    return ordered;
}

std::vector<const LabVariant*> peekOrderedTypes() { return peekOrderApply(peekOrderLoad()); }

std::optional<std::string> peekStyleCurrent() { return userDefaultsString(kStyleKey); }

void peekStyleSetCurrent(const std::string& title) { userDefaultsSetString(kStyleKey, title); }
