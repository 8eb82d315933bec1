// The Peek styles that ship with Brondel. The gaps in the order numbers leave room for
// styles to slot in between without renumbering.

#include "config/lab_variant.h"

namespace {

struct VariantColumnsDrill final : LabVariant {
    VariantColumnsDrill()
        : LabVariant("columns-drill", "Columns Drill",
                     "Finder-style columns of Peek plates: each click slides in a new column to the right", 400)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantColumnsDrill)

struct VariantZoomFill final : LabVariant {
    VariantZoomFill()
        : LabVariant("zoom-fill", "Zoom Fill",
                     "click a plate: neighbours fly away, its contents pour out and fill the view; breadcrumb to go back",
                     420)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantZoomFill)

struct VariantRowExpand final : LabVariant {
    VariantRowExpand()
        : LabVariant("row-expand", "Row Expand",
                     "click a plate: contents open right below its row with a pointer; open inside to nest deeper", 430)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantRowExpand)

struct VariantPopoverChain final : LabVariant {
    VariantPopoverChain()
        : LabVariant("popover-chain", "Popover Chain",
                     "click a plate: popover of its contents; click inside to cascade the next level like submenus", 440)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantPopoverChain)

struct VariantZoomOpen final : LabVariant {
    VariantZoomOpen()
        : LabVariant("zoom-open", "Zoom Open",
                     "click a plate: it springs open into a panel; keep clicking to drill down, Back to climb", 460)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantZoomOpen)

struct VariantDrillDown final : LabVariant {
    VariantDrillDown()
        : LabVariant("drill-down", "Drill Down",
                     "click a plate: contents slide open below it; click inside to go deeper, all levels visible", 470)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantDrillDown)

struct VariantCardStack final : LabVariant {
    VariantCardStack()
        : LabVariant("card-stack", "Card Stack",
                     "each level slides up as a card over the last; click a peeking card behind to go back", 480)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantCardStack)

struct VariantConveyor final : LabVariant {
    VariantConveyor()
        : LabVariant("conveyor", "Conveyor",
                     "two panes: folder left, its pick's contents right; going deeper slides the belt left", 490)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantConveyor)

struct VariantRowsDrill final : LabVariant {
    VariantRowsDrill()
        : LabVariant("rows-drill", "Rows Drill", "Columns Drill turned sideways: each click adds a scrolling shelf below",
                     500)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantRowsDrill)

struct VariantPeekTabs final : LabVariant {
    VariantPeekTabs()
        : LabVariant("peek-tabs", "Peek Tabs",
                     "every folder you open becomes a tab: switch between open folders like a browser", 510)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantPeekTabs)

struct VariantRailDrill final : LabVariant {
    VariantRailDrill()
        : LabVariant("rail-drill", "Rail Drill",
                     "opened folders stack on a left rail as small plates; contents pour out to the right", 520)
    {
    }
};
BRONDEL_REGISTER(LabVariant, VariantRailDrill)

} // namespace
