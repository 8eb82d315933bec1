#include "cards/card_sections.h"

#include "cards/card_grouper.h"
#include "cards/card_layout.h"
#include "cards/card_sort.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>

std::string cardKey(std::string_view title)
{
    icu::UnicodeString text = icu::UnicodeString::fromUTF8(icu::StringPiece(title.data(), int32_t(title.size())));
    text.toLower(icu::Locale::getRoot());
    std::string key, piece;
    auto flush = [&] {
        if (piece.empty())
            return;
        if (!key.empty())
            key += '-';
        key += piece;
        piece.clear();
    };
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        const UChar32 c = text.char32At(i);
        if (U_GET_GC_MASK(c) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK))
            icu::UnicodeString(c).toUTF8String(piece);
        else
            flush();
    }
    flush();
    return key;
}

std::vector<IconSec> cardSectionsWith(const CardCtx& ctx, const CardConfig& config, const BrondelSettings& settings,
                                      int64_t now)
{
    std::vector<DirNodePtr> sorted = cardSort(ctx.nodes, config, settings);
    std::vector<IconSec> sections;
    if (ctx.collapsible && config.collapsed) {
        IconSec strip;
        strip.card = ctx.card;
        strip.nodes = std::move(sorted);
        strip.strip = true;
        strip.thumbs = config.thumbs;
        strip.iconSize = config.iconSize;
        sections.push_back(std::move(strip));
    } else {
        const CardGrouper& grouper = cardGrouperFor(cardGroupKey(config, settings.sortBy));
        std::vector<CardGroup> groups = grouper.group(sorted, now);
        std::erase_if(groups, [&](const CardGroup& g) {
            return std::find(config.hidden.begin(), config.hidden.end(), g.title) != config.hidden.end();
        });
        sections = cardLayout(config.layout, ctx.family).sections(ctx, config, groups);
        // The header stays even when every group is hidden or the folder is empty.
        if (sections.empty()) {
            IconSec empty;
            empty.card = ctx.card;
            sections.push_back(std::move(empty));
        }
    }
    for (IconSec& sec : sections) {
        sec.cardKey = ctx.key;
        sec.family = ctx.family;
    }
    IconSec& first = sections.front();
    first.group = ctx.title;
    first.collapsible = ctx.collapsible;
    first.collapsed = ctx.collapsible && config.collapsed;
    return sections;
}

std::vector<IconSec> cardSections(const CardCtx& ctx, const BrondelSettings& settings, int64_t now)
{
    return cardSectionsWith(ctx, cardConfigLoad(ctx.key, ctx.family), settings, now);
}

bool iconViewAtRoot(const IconViewInput& in)
{
    return in.path == "/" || in.name == in.hostName;
}

namespace {

void append(std::vector<IconSec>& to, std::vector<IconSec> more)
{
    to.insert(to.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

std::string itemsTitle(const std::string& pattern, const std::string& folderName)
{
    static const std::string kSlot = "{folder}";
    std::string title;
    size_t start = 0;
    for (size_t at; (at = pattern.find(kSlot, start)) != std::string::npos; start = at + kSlot.size())
        title += pattern.substr(start, at - start) + folderName;
    title += pattern.substr(start);
    return title.empty() ? folderName : title;
}

} // namespace

std::vector<IconSec> buildSections(const IconViewInput& in)
{
    std::vector<IconSec> out;
    int64_t n = 0;
    if (iconViewAtRoot(in)) {
        if (in.settings.showDownloads) {
            for (const DownloadsCard& d : in.downloads) {
                CardCtx ctx{cardKey(d.title), d.title, d.children, n++, "files", true};
                append(out, cardSections(ctx, in.settings, in.now));
            }
        }
        CardCtx drives{"drives", in.settings.drivesTitle, in.items, n, "drives", false};
        append(out, cardSections(drives, in.settings, in.now));
    } else {
        IconSec items;
        items.card = n;
        items.group = itemsTitle(in.settings.itemsTitle, in.name);
        items.nodes = in.items;
        out.push_back(std::move(items));
    }
    bool first = true;
    for (const DirNodePtr& header : in.favorites) {
        IconSec sec;
        sec.card = n + 1;
        sec.group = first ? in.settings.favoritesTitle : "";
        sec.title = header->name;
        sec.hue = header->hue;
        sec.nodes = header->children;
        sec.pinned = header->name;
        out.push_back(std::move(sec));
        first = false;
    }
    if (!out.empty())
        out.front().topPad = 12;
    return out;
}
