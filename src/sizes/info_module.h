#pragma once
// Info modules: each kind of computed information shown beside items (a drive's free
// space, a file's size, a folder's total size) is a small class. A module joins the
// registry by being defined (BRONDEL_REGISTER(InfoModule, MyModule) in its .cpp).

#include "config/brondel_settings.h"
#include "fs/dir_node.h"
#include "fs/registry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class InfoModule {
public:
    virtual ~InfoModule() = default;
    virtual std::string key() const = 0;
    virtual std::string title() const = 0;
    virtual int64_t order() const { return 0; }
    virtual std::optional<std::string> text(const DirNode&) const { return std::nullopt; }
    virtual std::optional<double> fraction(const DirNode&) const { return std::nullopt; }
    virtual std::optional<std::pair<std::string, std::string>> pair(const DirNode&) const { return std::nullopt; }

    // Called before text() is asked for each of `nodes` in a row (the command line
    // listing a folder): a module may work out all the answers together beforehand.
    virtual void prepare(const std::vector<DirNodePtr>&) const {}
};

struct InfoModules {
    // Every module, sorted by order then key; built once.
    static const std::vector<std::unique_ptr<InfoModule>>& all() { return Registry<InfoModule>::all(); }

    // The modules the settings leave on (a key absent from infoOn counts as on).
    static std::vector<const InfoModule*> enabled(const BrondelSettings& settings);
};

// The info text beside a node: the enabled modules' texts joined with " · "; nothing for
// a section header or when no module has anything to say.
std::optional<std::string> infoLine(const DirNode& node, const BrondelSettings& settings);

// The same with the enabled modules worked out once by the caller (a long listing).
std::optional<std::string> infoLine(const DirNode& node, const std::vector<const InfoModule*>& enabled);
