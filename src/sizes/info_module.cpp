#include "sizes/info_module.h"

std::vector<const InfoModule*> InfoModules::enabled(const BrondelSettings& settings)
{
    std::vector<const InfoModule*> on;
    for (const auto& module : all()) {
        auto it = settings.infoOn.find(module->key());
        if (it == settings.infoOn.end() || it->second)
            on.push_back(module.get());
    }
    return on;
}

std::optional<std::string> infoLine(const DirNode& node, const BrondelSettings& settings)
{
    if (node.isSectionHeader)
        return std::nullopt;
    return infoLine(node, InfoModules::enabled(settings));
}

std::optional<std::string> infoLine(const DirNode& node, const std::vector<const InfoModule*>& enabled)
{
    if (node.isSectionHeader)
        return std::nullopt;
    std::optional<std::string> line;
    for (const InfoModule* module : enabled) {
        auto text = module->text(node);
        if (!text)
            continue;
        if (line)
            *line += " \u00b7 " + *text;
        else
            line = std::move(text);
    }
    return line;
}
