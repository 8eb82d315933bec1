#pragma once
// From a card's nodes to the sections the icon view draws, and the whole list of
// sections of a shown folder. Everything here works on values handed in; the card files
// are the only thing read (each card's options, fresh on every build).

#include "cards/card_config.h"
#include "cards/icon_sec.h"
#include "config/brondel_settings.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// A card title as a key: lower-cased, cut at every character that is not a Unicode
// letter, mark or digit, empty pieces dropped, joined with "-".
// "Downloads · Backup Disk" gives "downloads-backup-disk".
std::string cardKey(std::string_view title);

// The sections of one configurable card with the options given; never empty. `settings`
// is the window's sort, `now` the moment date groups count from.
std::vector<IconSec> cardSectionsWith(const CardCtx& ctx, const CardConfig& config, const BrondelSettings& settings,
                                      int64_t now);

// The same with the card's options read from its file now.
std::vector<IconSec> cardSections(const CardCtx& ctx, const BrondelSettings& settings, int64_t now);

// One Downloads folder as the root view shows it.
struct DownloadsCard {
    std::string path;
    std::string title;                // downloadsTitle(path)
    std::vector<DirNodePtr> children; // a one-level scan of the folder
};

// Everything the icon view's sections are built from, gathered beforehand.
struct IconViewInput {
    std::string path;               // the shown folder
    std::string name;               // its display name
    std::vector<DirNodePtr> items;  // the view's items in the view's order (the drives at the root)
    std::string hostName;           // the Computer root's name
    std::vector<DownloadsCard> downloads;
    std::vector<DirNodePtr> favorites; // favourites header nodes, then Recent when shown
    BrondelSettings settings;
    int64_t now = 0;
};

// Whether the view shows the Computer root: the path "/" or the host's name.
bool iconViewAtRoot(const IconViewInput& in);

// The icon view's sections in display order: at the root the Downloads cards (when
// shown) and the Drives card, elsewhere one section of the folder's items; then the
// Favorites card.
std::vector<IconSec> buildSections(const IconViewInput& in);

// Gathers the input for a shown folder: the host's name, at the root (with the Downloads
// cards on) every downloads folder scanned one level deep, the favourites headers and the
// time now. Reads the disk (volume probes of up to 3 s, folders, the favourites and
// recents files): call it off the UI thread.
IconViewInput iconViewGather(const std::string& path, const std::string& name, std::vector<DirNodePtr> items,
                             const BrondelSettings& settings);
