#include "views/icon_card_view.h"

#include "cards/card_menu.h"
#include "cards/card_show_all.h"
#include "cards/cards_changed.h"
#include "fs/fmt.h"
#include "services/file_icons.h"
#include "services/scan_service.h"
#include "services/theme_icons.h"
#include "services/thumbnail_loader.h"
#include "sizes/info_notifier.h"
#include "views/icon_card_paint.h"

#include <QAccessible>
#include <QApplication>
#include <QDesktopServices>
#include <QDrag>
#include <QFile>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QRubberBand>
#include <QScrollBar>
#include <QUrl>

#include <algorithm>
#include <set>
#include <utility>

namespace {

// The icon views alive in the process (main thread only).
std::set<IconCardView*>& liveViews()
{
    static auto* views = new std::set<IconCardView*>;
    return *views;
}

QIcon recordIcon(const IconCardData& data, int section, size_t index)
{
    const IconCardSection& s = data.sections[size_t(section)];
    if (!s.records)
        return fileIconFor(*s.sec.nodes[index]);
    const NodeRecord& r = s.records[index];
    if (r.isDir())
        return iconSymbol("folder");
    return FileIcons::shared().iconFor(std::string(r.nameView()));
}

QString detailOf(const IconCardData& data, int section, size_t index)
{
    const IconCardSection& s = data.sections[size_t(section)];
    if (s.records) {
        const NodeRecord& r = s.records[index];
        const std::string_view kind = nodeKindText(r);
        QString text = QString::fromUtf8(kind.data(), qsizetype(kind.size()));
        if (!r.isDir() && (nodeMeta(r) & kMetaKnown))
            text += QStringLiteral(" · ") + QString::fromStdString(fmtHuman(r.size));
        return text;
    }
    const DirNode& node = *s.sec.nodes[index];
    QString text = node.isDir && node.kind.empty() ? QCoreApplication::translate("IconCardView", "Folder")
                                                   : QString::fromStdString(node.kind);
    if (!node.isDir)
        text += QStringLiteral(" · ") + QString::fromStdString(fmtHuman(node.size));
    return text;
}

QString showAllText(const IconSec& sec)
{
    return sec.strip ? QCoreApplication::translate("IconCardView", "Show all ›")
                     : QCoreApplication::translate("IconCardView", "Show less");
}

// The x of an item's centre, for moving up and down between rows of other widths.
int columnNearest(const IconSecGeom& g, size_t count, int x, int stripOffset, size_t rowStart)
{
    if (g.strip)
        return std::clamp((x - g.itemsLeft + stripOffset) / std::max(1, g.cellWidth), 0, int(count) - 1);
    const int column = std::clamp((x - g.itemsLeft) / std::max(1, g.cellWidth), 0, g.columns - 1);
    return int(std::min(count - 1, rowStart + size_t(column)));
}

} // namespace

void iconCardViewsReload()
{
    for (IconCardView* view : liveViews())
        view->reload();
}

IconCardView::IconCardView(DirNodePtr root, std::vector<DirNodePtr> headers, const BrowserContext& context,
    ContentHooks hooks, QWidget* parent)
    : QAbstractScrollArea(parent)
    , m_root(std::move(root))
    , m_headers(std::move(headers))
    , m_context(context)
    , m_hooks(std::move(hooks))
{
    setObjectName(QStringLiteral("iconCardView"));
    setAccessibleName(QCoreApplication::translate("IconCardView", "Icons"));
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setAutoFillBackground(true);
    viewport()->setMouseTracking(false);
    verticalScrollBar()->setSingleStep(40);
    liveViews().insert(this);
    m_renameClick.setSingleShot(true);
    connect(&m_renameClick, &QTimer::timeout, this, [this] { beginRename(); });
    connect(&FileIcons::shared(), &FileIcons::changed, viewport(), qOverload<>(&QWidget::update));
    connect(&ThumbnailLoader::shared(), &ThumbnailLoader::ready, viewport(), qOverload<>(&QWidget::update));
    connect(&InfoNotifier::instance(), &InfoNotifier::brondelInfoChanged, this, [this] {
        // Folder sizes feed the drive tiles' legends: build again (the place is kept).
        const bool tiles = m_data && std::any_of(m_data->sections.begin(), m_data->sections.end(),
            [](const IconCardSection& s) { return s.sec.breakdown; });
        if (tiles)
            reload();
        else
            viewport()->update();
    });
    reload();
}

IconCardView::~IconCardView()
{
    remember();
    liveViews().erase(this);
    if (showsPreviews())
        ThumbnailLoader::shared().dropQueued();
}

bool IconCardView::showsPreviews() const
{
    return m_data && std::any_of(m_data->sections.begin(), m_data->sections.end(),
        [](const IconCardSection& s) { return s.sec.thumbs; });
}

void IconCardView::reload()
{
    const int64_t gen = ++m_generation;
    DirNodePtr root = m_root;
    std::vector<DirNodePtr> headers = m_headers;
    BrondelSettings settings = m_context.settings ? *m_context.settings : BrondelSettings{};
    m_context.scans->submit(this, [gen, root, headers, settings, this]() -> std::function<void()> {
        IconCardDataPtr data = iconCardDataGather(root, headers, settings);
        return [this, gen, data] {
            if (gen == m_generation)
                apply(data);
        };
    });
}

void IconCardView::apply(IconCardDataPtr data)
{
    // What to keep: the selection and current item by path, the scroll position. The
    // first build of a view takes them from the pane's memory, when it was here last.
    std::set<std::string> selected;
    std::string current;
    int scroll = verticalScrollBar()->value();
    if (m_data) {
        for (const std::string& path : selectedPaths())
            selected.insert(path);
        if (m_current.valid())
            current = m_data->path(m_current.section, m_current.index);
    } else if (m_hooks.iconMemory && m_root && m_hooks.iconMemory->location == m_root->path) {
        selected.insert(m_hooks.iconMemory->selected.begin(), m_hooks.iconMemory->selected.end());
        current = m_hooks.iconMemory->current;
        scroll = m_hooks.iconMemory->scroll;
    }
    if (!m_data || m_data->sections.size() != data->sections.size())
        m_stripOffsets.clear();
    m_data = std::move(data);
    m_selected.assign(m_data->sections.size(), {});
    m_selectedCount = 0;
    m_current = m_anchor = {};
    for (size_t s = 0; s < m_data->sections.size(); ++s) {
        const size_t count = m_data->sections[s].count();
        m_selected[s].assign(count, false);
        if (selected.empty() && current.empty())
            continue;
        for (size_t i = 0; i < count; ++i) {
            const std::string path = m_data->path(int(s), i);
            if (selected.count(path)) {
                m_selected[s][i] = true;
                ++m_selectedCount;
            }
            if (!m_current.valid() && path == current)
                m_current = m_anchor = {int(s), i};
        }
    }
    relayout();
    verticalScrollBar()->setValue(scroll);
    if (!m_selectOnArrival.empty())
        selectPath(std::exchange(m_selectOnArrival, std::string()));
    renameFollow();
    viewport()->update();
    if (QAccessible::isActive()) { // the items are new: assistive technology asks again
        QAccessibleEvent reorder(this, QAccessible::ObjectReorder);
        QAccessible::updateAccessibility(&reorder);
    }
    emit loaded();
}

void IconCardView::relayout()
{
    std::vector<IconSecShape> shapes;
    if (m_data)
        for (const IconCardSection& s : m_data->sections) {
            IconSecShape shape;
            shape.count = s.count();
            shape.strip = s.sec.strip;
            shape.list = s.sec.list;
            shape.breakdown = s.sec.breakdown;
            shape.iconSize = s.sec.iconSize;
            shape.legendRows = s.sec.legendRows;
            shape.tileWidth = s.sec.tileWidth;
            shape.topPad = s.sec.topPad;
            shape.cardHeader = !s.sec.group.empty() || s.sec.collapsible;
            shape.subHeader = !s.sec.title.empty();
            shapes.push_back(shape);
        }
    m_layout = iconLayoutMake(shapes, viewport()->width());
    QScrollBar* bar = verticalScrollBar();
    bar->setPageStep(viewport()->height());
    bar->setRange(0, std::max(0, m_layout.height - viewport()->height()));
}

void IconCardView::remember() const
{
    if (!m_hooks.iconMemory || !m_data || !m_root)
        return;
    IconViewMemory& memory = *m_hooks.iconMemory;
    memory.location = m_root->path;
    memory.scroll = verticalScrollBar()->value();
    memory.selected = selectedPaths();
    memory.current = m_current.valid() ? m_data->path(m_current.section, m_current.index) : std::string();
}

int IconCardView::contentTop() const
{
    return verticalScrollBar()->value();
}

QRect IconCardView::toViewport(const QRect& content) const
{
    return content.translated(0, -contentTop());
}

int IconCardView::stripOffset(int section) const
{
    const auto it = m_stripOffsets.find(section);
    return it == m_stripOffsets.end() ? 0 : it->second;
}

// ---- geometry and hit tests

QRect IconCardView::itemRect(IconSpot spot) const
{
    if (!m_data || !spot.valid() || size_t(spot.section) >= m_layout.sections.size())
        return {};
    return toViewport(iconItemRect(m_layout.sections[size_t(spot.section)], spot.index, stripOffset(spot.section)));
}

IconSpot IconCardView::itemAt(QPoint pos) const
{
    if (!m_data)
        return {};
    const QPoint content = pos + QPoint(0, contentTop());
    const int s = iconSectionAt(m_layout, content.y());
    if (s < 0)
        return {};
    const IconSecGeom& g = m_layout.sections[size_t(s)];
    const QRect point(content, QSize(1, 1));
    const auto [first, last] = iconItemsIn(g, m_data->count(s), point, stripOffset(s));
    for (size_t i = first; i < last; ++i)
        if (iconItemRect(g, i, stripOffset(s)).contains(content))
            return {s, i};
    return {};
}

QRect IconCardView::controlRect(int section, IconControl control) const
{
    if (!m_data || section < 0 || size_t(section) >= m_layout.sections.size())
        return {};
    const IconSec& sec = m_data->sections[size_t(section)].sec;
    const IconSecGeom& g = m_layout.sections[size_t(section)];
    switch (control) {
    case IconControl::Chevron:
        return !g.header.isEmpty() && sec.collapsible ? iconChevronRect(toViewport(g.header)) : QRect();
    case IconControl::Tune:
        return !g.header.isEmpty() && sec.cardKey ? iconTuneRect(toViewport(g.header)) : QRect();
    case IconControl::ShowAll:
        return !g.sub.isEmpty() && sec.showAll ? iconShowAllRect(toViewport(g.sub), showAllText(sec), font()) : QRect();
    case IconControl::None:
        break;
    }
    return {};
}

IconControl IconCardView::controlAt(QPoint pos, int* section) const
{
    const int s = iconSectionAt(m_layout, pos.y() + contentTop());
    if (section)
        *section = s;
    for (IconControl c : {IconControl::Chevron, IconControl::Tune, IconControl::ShowAll})
        if (controlRect(s, c).contains(pos))
            return c;
    return IconControl::None;
}

// ---- painting

void IconCardView::paintEvent(QPaintEvent*)
{
    if (!m_data)
        return;
    QPainter p(viewport());
    const int top = contentTop();
    const QRect area(0, top, viewport()->width(), viewport()->height());
    const bool focused = hasFocus();
    const qreal dpr = devicePixelRatioF();
    for (size_t s = 0; s < m_layout.sections.size(); ++s) {
        const IconSecGeom& g = m_layout.sections[s];
        if (g.top > area.bottom() || g.top + g.height < area.top())
            continue;
        const IconCardSection& section = m_data->sections[s];
        const IconSec& sec = section.sec;
        if (!g.header.isEmpty()) {
            IconHeaderLook look{QString::fromStdString(sec.group), sec.collapsible, sec.collapsed, bool(sec.cardKey),
                controlRect(int(s), IconControl::Chevron), controlRect(int(s), IconControl::Tune)};
            iconPaintCardHeader(p, toViewport(g.header), look, palette());
        }
        if (!g.sub.isEmpty()) {
            IconSubLook look{QString::fromStdString(sec.title), sec.hue, sec.showAll ? showAllText(sec) : QString(),
                controlRect(int(s), IconControl::ShowAll)};
            iconPaintSubHeader(p, toViewport(g.sub), look, palette());
        }
        const int offset = stripOffset(int(s));
        const auto [first, last] = iconItemsIn(g, section.count(), area, offset);
        const int edge = int(sec.iconSize);
        for (size_t i = first; i < last; ++i) {
            IconItemLook look;
            look.name = m_data->name(int(s), i);
            look.iconEdge = sec.breakdown ? 32 : edge;
            look.selected = m_selected[s][i];
            look.current = m_current == IconSpot{int(s), i};
            look.focused = focused;
            const bool dir = m_data->isDir(int(s), i);
            look.icon = iconTinted(recordIcon(*m_data, int(s), i), look.iconEdge, dir ? sec.hue : std::nullopt, dpr);
            if (sec.thumbs && !dir && thumbnailIsImageName(look.name))
                look.preview = ThumbnailLoader::shared().preview(m_data->path(int(s), i), look.iconEdge * dpr);
            const QRect cell = toViewport(iconItemRect(g, i, offset));
            if (sec.list) {
                look.detail = detailOf(*m_data, int(s), i);
                iconPaintListRow(p, cell, look, palette());
            } else if (sec.breakdown) {
                iconPaintTile(p, cell, look, i < section.tiles.size() ? section.tiles[i] : DriveTile{}, palette());
            } else {
                iconPaintItem(p, cell, look, palette());
            }
        }
    }
}

void IconCardView::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    const int value = verticalScrollBar()->value();
    relayout();
    verticalScrollBar()->setValue(value);
    renameFollow();
}

void IconCardView::scrollContentsBy(int, int)
{
    // Previews asked for rows that scrolled away wait no longer: the repaint asks for
    // the rows now on screen.
    if (showsPreviews())
        ThumbnailLoader::shared().dropQueued();
    renameFollow();
    viewport()->update();
}

void IconCardView::hideEvent(QHideEvent* event)
{
    remember();
    QAbstractScrollArea::hideEvent(event);
}

void IconCardView::focusInEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusInEvent(event);
    if (!m_current.valid() && m_data)
        for (size_t s = 0; s < m_data->sections.size(); ++s)
            if (m_data->sections[s].count() > 0) {
                m_current = m_anchor = {int(s), 0};
                break;
            }
    viewport()->update();
}

// ---- selection

bool IconCardView::isSelected(IconSpot spot) const
{
    return spot.valid() && size_t(spot.section) < m_selected.size() && spot.index < m_selected[size_t(spot.section)].size()
        && m_selected[size_t(spot.section)][spot.index];
}

void IconCardView::clearSelection()
{
    for (auto& section : m_selected)
        std::fill(section.begin(), section.end(), false);
    m_selectedCount = 0;
}

std::vector<std::string> IconCardView::selectedPaths() const
{
    std::vector<std::string> paths;
    if (!m_data || m_selectedCount == 0)
        return paths;
    std::set<std::string> seen;
    for (size_t s = 0; s < m_selected.size(); ++s)
        for (size_t i = 0; i < m_selected[s].size(); ++i)
            if (m_selected[s][i]) {
                std::string path = m_data->path(int(s), i);
                if (seen.insert(path).second)
                    paths.push_back(std::move(path));
            }
    return paths;
}

bool IconCardView::selectPath(const std::string& path)
{
    if (!m_data) {
        m_selectOnArrival = path; // the sections are still being built
        return true;
    }
    for (size_t s = 0; s < m_data->sections.size(); ++s)
        for (size_t i = 0; i < m_data->sections[s].count(); ++i)
            if (m_data->path(int(s), i) == path) {
                setCurrent({int(s), i});
                return true;
            }
    return false;
}

void IconCardView::setCurrent(IconSpot spot, bool select)
{
    if (!m_data || !spot.valid())
        return;
    if (select) {
        clearSelection();
        m_selected[size_t(spot.section)][spot.index] = true;
        m_selectedCount = 1;
        m_anchor = spot;
    }
    m_current = spot;
    scrollToSpot(spot);
    viewport()->update();
    announceSelection();
}

void IconCardView::selectRange(IconSpot from, IconSpot to)
{
    if (!from.valid())
        from = to;
    if (std::pair(to.section, to.index) < std::pair(from.section, from.index))
        std::swap(from, to);
    clearSelection();
    for (int s = from.section; s <= to.section; ++s) {
        const size_t begin = s == from.section ? from.index : 0;
        const size_t end = s == to.section ? to.index + 1 : m_data->sections[size_t(s)].count();
        for (size_t i = begin; i < end; ++i)
            m_selected[size_t(s)][i] = true;
        m_selectedCount += end > begin ? end - begin : 0;
    }
}

void IconCardView::bandSelect(const QRect& rect, bool add)
{
    m_selected = add ? m_bandBase : std::vector<std::vector<bool>>(m_bandBase.size());
    m_selectedCount = 0;
    for (size_t s = 0; s < m_selected.size(); ++s) {
        m_selected[s].resize(m_data->sections[s].count(), false);
        const IconSecGeom& g = m_layout.sections[s];
        const auto [first, last] = iconItemsIn(g, m_data->sections[s].count(), rect, stripOffset(int(s)));
        for (size_t i = first; i < last; ++i)
            if (iconItemRect(g, i, stripOffset(int(s))).intersects(rect))
                m_selected[s][i] = true;
        m_selectedCount += size_t(std::count(m_selected[s].begin(), m_selected[s].end(), true));
    }
    viewport()->update();
}

void IconCardView::announceSelection()
{
    if (!m_current.valid() || !QAccessible::isActive())
        return;
    size_t flat = m_current.index;
    for (int s = 0; s < m_current.section; ++s)
        flat += m_data->count(s);
    QAccessibleEvent focus(this, QAccessible::Focus);
    focus.setChild(int(flat));
    QAccessible::updateAccessibility(&focus);
}

void IconCardView::scrollToSpot(IconSpot spot)
{
    const IconSecGeom& g = m_layout.sections[size_t(spot.section)];
    QRect rect = iconItemRect(g, spot.index, stripOffset(spot.section));
    if (g.strip) {
        // Bring the item into the strip's own horizontal range.
        int offset = stripOffset(spot.section);
        const int x = rect.left() + offset - g.itemsLeft;
        const int visible = viewport()->width() - 2 * g.itemsLeft;
        if (x < offset)
            offset = x;
        else if (x + g.cellWidth > offset + visible)
            offset = x + g.cellWidth - visible;
        m_stripOffsets[spot.section] = std::clamp(offset, 0, iconStripRange(g, m_data->count(spot.section), viewport()->width()));
        rect = iconItemRect(g, spot.index, stripOffset(spot.section));
    }
    QScrollBar* bar = verticalScrollBar();
    if (spot.index == 0 || (g.rows > 0 && rect.top() - g.itemsTop < g.cellHeight))
        rect.setTop(g.top); // the first row shows its headers too
    if (rect.top() < bar->value())
        bar->setValue(rect.top());
    else if (rect.bottom() > bar->value() + viewport()->height())
        bar->setValue(rect.bottom() - viewport()->height() + 1);
}

// ---- mouse

void IconCardView::mousePressEvent(QMouseEvent* event)
{
    setFocus(Qt::MouseFocusReason);
    if (event->button() != Qt::LeftButton || !m_data)
        return;
    const QPoint pos = event->position().toPoint();
    int section = -1;
    if (const IconControl control = controlAt(pos, &section); control != IconControl::None) {
        pressControl(section, control);
        return;
    }
    const IconSpot spot = itemAt(pos);
    m_pressPos = pos;
    m_pressContent = pos + QPoint(0, contentTop());
    m_pressSpot = spot;
    const Qt::KeyboardModifiers mods = event->modifiers();
    m_pressAgain = spot.valid() && !mods && m_selectedCount == 1 && isSelected(spot) && m_current == spot;
    if (spot.valid()) {
        if (mods & Qt::ControlModifier) {
            const bool on = !isSelected(spot);
            m_selected[size_t(spot.section)][spot.index] = on;
            m_selectedCount += on ? 1 : size_t(-1);
            m_anchor = spot;
        } else if (mods & Qt::ShiftModifier) {
            selectRange(m_anchor, spot);
        } else if (!isSelected(spot)) {
            clearSelection();
            m_selected[size_t(spot.section)][spot.index] = true;
            m_selectedCount = 1;
            m_anchor = spot;
        }
        m_current = spot;
        announceSelection();
    } else {
        m_bandAdd = mods & (Qt::ControlModifier | Qt::ShiftModifier);
        if (!m_bandAdd)
            clearSelection();
        m_banding = true;
        m_bandBase = m_selected;
    }
    viewport()->update();
}

void IconCardView::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton) || !m_data)
        return;
    const QPoint pos = event->position().toPoint();
    if (m_pressSpot.valid()) {
        if ((pos - m_pressPos).manhattanLength() >= QApplication::startDragDistance()) {
            m_pressSpot = {};
            startDrag();
        }
        return;
    }
    if (!m_banding)
        return;
    const QRect content = QRect(m_pressContent, pos + QPoint(0, contentTop())).normalized();
    if (!m_band)
        m_band = new QRubberBand(QRubberBand::Rectangle, viewport());
    m_band->setGeometry(toViewport(content));
    m_band->show();
    bandSelect(content, m_bandAdd);
}

void IconCardView::mouseReleaseEvent(QMouseEvent* event)
{
    // A plain click on one of several selected items selects it alone once it is clear
    // that no drag follows.
    if (m_pressSpot.valid() && !(event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier))
        && m_selectedCount > 1 && m_pressSpot == itemAt(event->position().toPoint()))
        setCurrent(m_pressSpot);
    if (m_pressAgain && m_pressSpot.valid() && m_pressSpot == itemAt(event->position().toPoint()))
        m_renameClick.start(QApplication::doubleClickInterval()); // unless a double click follows
    m_pressSpot = {};
    m_banding = false;
    if (m_band)
        m_band->hide();
}

void IconCardView::mouseDoubleClickEvent(QMouseEvent* event)
{
    m_renameClick.stop();
    const IconSpot spot = itemAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && spot.valid())
        activate(spot);
}

void IconCardView::wheelEvent(QWheelEvent* event)
{
    // Sideways (or Shift) wheel over a strip scrolls that strip.
    const QPoint pos = event->position().toPoint();
    const int s = iconSectionAt(m_layout, pos.y() + contentTop());
    const QPoint delta = event->angleDelta();
    const int sideways = delta.x() != 0 ? delta.x() : (event->modifiers() & Qt::ShiftModifier) ? delta.y() : 0;
    if (m_data && s >= 0 && m_layout.sections[size_t(s)].strip && sideways != 0) {
        const IconSecGeom& g = m_layout.sections[size_t(s)];
        const int range = iconStripRange(g, m_data->count(s), viewport()->width());
        m_stripOffsets[s] = std::clamp(stripOffset(s) - sideways, 0, range);
        viewport()->update();
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void IconCardView::startDrag()
{
    const std::vector<std::string> paths = selectedPaths();
    if (paths.empty())
        return;
    QList<QUrl> urls;
    for (const std::string& path : paths)
        urls << QUrl::fromLocalFile(QFile::decodeName(QByteArray::fromStdString(path)));
    auto* mime = new QMimeData;
    mime->setUrls(urls); // text/uri-list, as the list view gives
    QPointer<QDrag> drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
}

// ---- keyboard

void IconCardView::activate(IconSpot spot)
{
    if (m_data && spot.valid())
        contentActivate(m_data->node(spot.section, spot.index), m_hooks);
}

void IconCardView::keyPressEvent(QKeyEvent* event)
{
    if (!m_data) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
        moveCurrent(event->key(), event->modifiers());
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        activate(m_current);
        return;
    default:
        break;
    }
    if (event->matches(QKeySequence::SelectAll)) {
        for (auto& section : m_selected)
            std::fill(section.begin(), section.end(), true);
        m_selectedCount = 0;
        for (const auto& section : m_selected)
            m_selectedCount += section.size();
        viewport()->update();
        return;
    }
    const QString text = event->text();
    if (!text.isEmpty() && text.at(0).isPrint() && !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier))) {
        typeAhead(text);
        return;
    }
    QAbstractScrollArea::keyPressEvent(event);
}

void IconCardView::moveCurrent(int key, Qt::KeyboardModifiers mods)
{
    std::vector<int> filled; // sections with items
    for (size_t s = 0; s < m_data->sections.size(); ++s)
        if (m_data->sections[s].count() > 0)
            filled.push_back(int(s));
    if (filled.empty())
        return;
    IconSpot to = m_current;
    if (!to.valid()) {
        to = {filled.front(), 0};
    } else {
        const auto at = std::find(filled.begin(), filled.end(), m_current.section) - filled.begin();
        const IconSecGeom& g = m_layout.sections[size_t(m_current.section)];
        const size_t count = m_data->count(m_current.section);
        const int x = iconItemRect(g, m_current.index, stripOffset(m_current.section)).center().x();
        const size_t step = g.strip ? 1 : size_t(g.columns);
        switch (key) {
        case Qt::Key_Left:
            if (to.index > 0)
                --to.index;
            else if (at > 0)
                to = {filled[size_t(at - 1)], m_data->count(filled[size_t(at - 1)]) - 1};
            break;
        case Qt::Key_Right:
            if (to.index + 1 < count)
                ++to.index;
            else if (size_t(at + 1) < filled.size())
                to = {filled[size_t(at + 1)], 0};
            break;
        case Qt::Key_Up:
            if (!g.strip && to.index >= step) {
                to.index -= step;
            } else if (at > 0) {
                const int s = filled[size_t(at - 1)];
                const IconSecGeom& h = m_layout.sections[size_t(s)];
                const size_t n = m_data->count(s);
                const size_t lastRow = h.strip ? 0 : (n - 1) / size_t(h.columns) * size_t(h.columns);
                to = {s, size_t(columnNearest(h, n, x, stripOffset(s), lastRow))};
            }
            break;
        case Qt::Key_Down:
            if (!g.strip && to.index / step + 1 < (count + step - 1) / step) {
                to.index = std::min(count - 1, to.index + step);
            } else if (size_t(at + 1) < filled.size()) {
                const int s = filled[size_t(at + 1)];
                to = {s, size_t(columnNearest(m_layout.sections[size_t(s)], m_data->count(s), x, stripOffset(s), 0))};
            }
            break;
        case Qt::Key_Home:
            to = {filled.front(), 0};
            break;
        case Qt::Key_End:
            to = {filled.back(), m_data->count(filled.back()) - 1};
            break;
        }
    }
    if (mods & Qt::ShiftModifier) {
        selectRange(m_anchor, to);
        m_current = to;
        scrollToSpot(to);
        viewport()->update();
        announceSelection();
    } else {
        setCurrent(to, !(mods & Qt::ControlModifier));
    }
}

void IconCardView::typeAhead(const QString& text)
{
    const bool fresh = !m_typedAt.isValid() || m_typedAt.elapsed() > 1000;
    m_typed = fresh ? text : m_typed + text;
    m_typedAt.start();
    // Search from the current item (a longer prefix may still match it), else from the top.
    const IconSpot start = m_current.valid() ? m_current : IconSpot{0, 0};
    const size_t sections = m_data->sections.size();
    for (size_t n = 0; n <= sections; ++n) {
        const int s = int((size_t(start.section) + n) % sections);
        const size_t count = m_data->count(s);
        const size_t from = n == 0 ? start.index + (fresh && m_current.valid() ? 1 : 0) : 0;
        for (size_t i = from; i < count; ++i)
            if (m_data->name(s, i).startsWith(m_typed, Qt::CaseInsensitive)) {
                setCurrent({s, i});
                return;
            }
    }
}
