#include "app/cli_infos.h"

#include "config/settings_file.h"
#include "fs/fmt.h"
#include "sizes/info_module.h"

#include <algorithm>

namespace {

constexpr size_t kKeyWidth = 14;

void printModules(const BrondelSettings& settings, CliOut& out)
{
    for (const auto& module : InfoModules::all()) {
        const auto it = settings.infoOn.find(module->key());
        const bool on = it == settings.infoOn.end() || it->second;
        std::string line = on ? "on " : "off";
        line += "  ";
        fmtAppendPadded(line, module->key(), kKeyWidth);
        line += module->title();
        out.line(line);
    }
}

} // namespace

int CLIInfos::run(const Args& args, CliOut& out)
{
    BrondelSettings& settings = Settings::current();
    if (args.empty()) {
        printModules(settings, out);
        return 0;
    }
    if (args.size() != 2 || (args[0] != "on" && args[0] != "off")) {
        out.line("Usage: brondel infos [on|off <key>]");
        return 1;
    }
    const std::string& key = args[1];
    const auto& all = InfoModules::all();
    if (std::none_of(all.begin(), all.end(), [&](const auto& module) { return module->key() == key; })) {
        out.line("Unknown info module: " + key + "  (see: brondel infos)");
        return 1;
    }
    const BrondelSettings before = settings;
    settings.infoOn[key] = args[0] == "on";
    settingsUpdate(before, settings);
    printModules(settings, out);
    return 0;
}
