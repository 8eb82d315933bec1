// The icon view's menus and card header controls: the items' context menu, the card
// menu of a "⋯" button or a header's right click, collapse and Show all.

#include "views/icon_card_view.h"

#include "cards/card_menu.h"
#include "cards/card_show_all.h"
#include "cards/cards_changed.h"
#include "services/scan_service.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QFile>
#include <QMenu>
#include <QUrl>

// ---- menus and header controls

void IconCardView::contextMenuEvent(QContextMenuEvent* event)
{
    const QPoint pos = event->pos();
    IconSpot spot;
    if (m_data) { // before the first build there is only empty space to click
        const int s = iconSectionAt(m_layout, pos.y() + contentTop());
        if (s >= 0) {
            const IconSecGeom& g = m_layout.sections[size_t(s)];
            const bool onHeader = toViewport(g.header).contains(pos) || toViewport(g.sub).contains(pos);
            if (onHeader && m_data->sections[size_t(s)].sec.cardKey) {
                openCardMenu(s, event->globalPos());
                return;
            }
        }
        spot = itemAt(pos);
        if (spot.valid() && !isSelected(spot))
            setCurrent(spot);
    }
    if (!m_hooks.fillMenu)
        return;
    auto menu = std::make_unique<QMenu>();
    m_hooks.fillMenu(*menu, spot.valid() ? m_data->node(spot.section, spot.index) : DirNodePtr());
    if (!menu->isEmpty())
        contentMenuPopup(std::move(menu), *this, event->globalPos());
}

void IconCardView::pressControl(int section, IconControl control)
{
    if (!m_data || section < 0)
        return;
    const IconCardSection& s = m_data->sections[size_t(section)];
    switch (control) {
    case IconControl::Chevron:
        if (s.sec.cardKey)
            cardEdit(s, [](CardConfig& config) { config.collapsed = !config.collapsed; });
        break;
    case IconControl::Tune: {
        const QRect button = controlRect(section, IconControl::Tune);
        openCardMenu(section, viewport()->mapToGlobal(QPoint(button.left(), button.bottom() + 3)));
        break;
    }
    case IconControl::ShowAll:
        if (s.sec.showAll) {
            cardShowAllToggle(*s.sec.showAll);
            iconCardViewsReload();
        }
        break;
    case IconControl::None:
        break;
    }
}

namespace {

// Tells the other Brondel processes; off the edit queue, since the post may wait for
// the bus for half a second.
void postCardsChanged(const BrowserContext& context)
{
    context.scans->submit(nullptr, []() -> std::function<void()> {
        cardsChangedPost();
        return {};
    });
}

} // namespace

void IconCardView::cardEdit(const IconCardSection& section, std::function<void(CardConfig&)> change)
{
    const std::string key = *section.sec.cardKey;
    const std::string family = section.sec.family;
    BrowserContext context = m_context;
    m_context.editQueue().submit(nullptr, [key, family, change, context]() -> std::function<void()> {
        cardUpdate(key, family, change);
        return [context] {
            iconCardViewsReload();
            postCardsChanged(context);
        };
    });
}

namespace {

void fillCardMenu(QMenu& menu, const std::vector<CardMenuItem>& items, const std::string& key,
    const std::string& family, const BrowserContext& context)
{
    for (const CardMenuItem& item : items) {
        if (item.separator) {
            menu.addSeparator();
            continue;
        }
        const QString title = QString::fromStdString(item.title);
        if (!item.submenu.empty()) {
            fillCardMenu(*menu.addMenu(title), item.submenu, key, family, context);
            continue;
        }
        QAction* action = menu.addAction(title);
        action->setCheckable(item.on);
        action->setChecked(item.on);
        QObject::connect(action, &QAction::triggered, action, [item, key, family, context] {
            context.editQueue().submit(nullptr, [item, key, family, context]() -> std::function<void()> {
                const std::optional<std::string> file = cardMenuChoose(item, key, family);
                return [file, context] {
                    if (file) {
                        QDesktopServices::openUrl(QUrl::fromLocalFile(QFile::decodeName(QByteArray::fromStdString(*file))));
                        return;
                    }
                    iconCardViewsReload();
                    postCardsChanged(context);
                };
            });
        });
    }
}

} // namespace

void IconCardView::openCardMenu(int section, QPoint global)
{
    if (!m_data || section < 0 || !m_data->sections[size_t(section)].sec.cardKey)
        return;
    const IconSec& sec = m_data->sections[size_t(section)].sec;
    const std::string key = *sec.cardKey;
    const std::string family = sec.family;
    const BrondelSettings settings = m_context.settings ? *m_context.settings : BrondelSettings{};
    // The card's file is read on the edit queue, after any change still on its way.
    m_context.editQueue().submit(this, [this, key, family, settings, global]() -> std::function<void()> {
        std::vector<CardMenuItem> items = cardMenu(key, family, settings);
        return [this, items = std::move(items), key, family, global] {
            auto menu = std::make_unique<QMenu>();
            menu->setObjectName(QStringLiteral("cardMenu"));
            fillCardMenu(*menu, items, key, family, m_context);
            QMenu* shown = menu.get();
            contentMenuPopup(std::move(menu), *this, global);
            emit cardMenuShown(shown);
        };
    });
}
