#pragma once
// Layouts turn a card's groups into the sections the icon view draws: wrapped icons,
// sideways strips, list rows, drive icons or drive-space breakdown tiles. Each belongs to
// a family ("files" for the Downloads cards, "drives" for the Drives card) and joins by
// being defined: BRONDEL_REGISTER(CardLayout, MyLayout).

#include "cards/card_config.h"
#include "cards/card_grouper.h"
#include "cards/icon_sec.h"
#include "fs/registry.h"

#include <cstdint>
#include <string>
#include <vector>

class CardLayout {
public:
    virtual ~CardLayout() = default;
    virtual std::string key() const { return ""; }
    virtual std::string title() const { return ""; }
    virtual int64_t order() const { return 50; }
    virtual std::string family() const { return "files"; }

    // One section per group, in the groups' order; none for no groups. The card title,
    // family and collapse state are the card's to set afterwards.
    virtual std::vector<IconSec> sections(const CardCtx& ctx, const CardConfig& config,
                                          const std::vector<CardGroup>& groups) const;

protected:
    // The layout's own display fields of one group's section.
    virtual void dress(IconSec& sec, const CardGroup& group, const CardCtx& ctx, const CardConfig& config) const {}
};

// Every layout in registry order, built once.
const std::vector<std::unique_ptr<CardLayout>>& cardLayouts();

// The layouts of one family, in registry order; the first is the family's default.
std::vector<const CardLayout*> cardLayoutsOf(const std::string& family);

// The family's layout with that key, else the family's first layout (so "" and unknown
// or other-family keys fall back), else the base layout for a family without layouts.
const CardLayout& cardLayout(const std::string& key, const std::string& family);
