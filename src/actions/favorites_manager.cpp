#include "actions/favorites_manager.h"

#include "actions/action_dialogs.h"
#include "actions/context_actions.h"
#include "config/config_paths.h"
#include "fs/paths.h"
#include "services/browser_context.h"
#include "services/scan_service.h"
#include "services/theme_icons.h"

#include <QColorDialog>
#include <QDialogButtonBox>
#include <QDropEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace {

constexpr int kTitleRole = Qt::UserRole;      // a section's title bytes
constexpr int kPathRole = Qt::UserRole + 1;   // a folder's absolute path bytes

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

std::string bytesOf(const QTreeWidgetItem* item, int role)
{
    return item ? item->data(0, role).toByteArray().toStdString() : std::string();
}

QIcon swatch(double hue)
{
    QPixmap pixmap(14, 14);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    double wheel = std::fmod(hue, 1.0);
    if (wheel < 0)
        wheel += 1.0;
    painter.setBrush(QColor::fromHsvF(float(wheel), 0.6f, 0.85f));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(pixmap.rect().adjusted(1, 1, -1, -1));
    return QIcon(pixmap);
}

QPushButton* button(const QString& text, QWidget* parent)
{
    auto* made = new QPushButton(text, parent);
    made->setAccessibleName(text);
    return made;
}

// Index of the first entry of `path` in `sec`, compared as the file compares paths.
std::optional<int64_t> rowOf(const PinnedSec& sec, const std::string& path)
{
    for (size_t i = 0; i < sec.paths.size(); ++i)
        if (configSamePath(sec.paths[i], path))
            return int64_t(i);
    return std::nullopt;
}

const PinnedSec* sectionTitled(const PinnedFile& file, const std::string& title)
{
    for (const PinnedSec& sec : file.secs)
        if (sec.title == title)
            return &sec;
    return nullptr;
}

} // namespace

int favoritesLandingIndex(int from, int insertBefore)
{
    return insertBefore > from ? insertBefore - 1 : insertBefore;
}

FavoritesTree::FavoritesTree(QWidget* parent)
    : QTreeWidget(parent)
{
    setHeaderHidden(true);
    setDragDropMode(QAbstractItemView::InternalMove);
    setDefaultDropAction(Qt::MoveAction);
    setSelectionMode(QAbstractItemView::SingleSelection);
}

void FavoritesTree::dropEvent(QDropEvent* event)
{
    QTreeWidgetItem* dragged = currentItem();
    QTreeWidgetItem* target = itemAt(event->position().toPoint());
    const DropIndicatorPosition where = dropIndicatorPosition();
    // The tree is rebuilt from the file once the move is made there.
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    if (!dragged || !target || dragged == target)
        return;
    if (!dragged->parent()) {
        QTreeWidgetItem* section = target->parent() ? target->parent() : target;
        const int at = indexOfTopLevelItem(section);
        const int before = where == AboveItem && !target->parent() ? at : at + 1;
        const int from = indexOfTopLevelItem(dragged);
        emit sectionDropped(from, favoritesLandingIndex(from, before));
        return;
    }
    const int fromSection = indexOfTopLevelItem(dragged->parent());
    const int fromRow = dragged->parent()->indexOfChild(dragged);
    int toSection;
    int before;
    if (!target->parent()) { // onto a section: its end, or its top just below its title
        toSection = indexOfTopLevelItem(target);
        before = where == BelowItem && target->isExpanded() ? 0 : target->childCount();
    } else {
        toSection = indexOfTopLevelItem(target->parent());
        const int row = target->parent()->indexOfChild(target);
        before = where == AboveItem ? row : row + 1;
    }
    emit folderDropped(fromSection, fromRow, toSection,
        toSection == fromSection ? favoritesLandingIndex(fromRow, before) : before);
}

FavoritesManager::FavoritesManager(const BrowserContext& context, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , m_context(context)
{
    setWindowTitle(tr("Manage Favorites"));
    setObjectName(QStringLiteral("favoritesManager"));
    resize(640, 520);
    auto* layout = new QVBoxLayout(this);

    auto* top = new QHBoxLayout;
    m_tree = new FavoritesTree(this);
    m_tree->setAccessibleName(tr("Favorites sections"));
    top->addWidget(m_tree, 1);
    auto* side = new QVBoxLayout;
    QPushButton* newSection = button(tr("New Section\u2026"), this);
    QPushButton* addFolder = button(tr("Add Folders\u2026"), this);
    QPushButton* rename = button(tr("Rename\u2026"), this);
    QPushButton* up = button(tr("Move Up"), this);
    QPushButton* down = button(tr("Move Down"), this);
    m_colorButton = new QToolButton(this);
    m_colorButton->setText(tr("Color"));
    m_colorButton->setAccessibleName(tr("Color"));
    m_colorButton->setPopupMode(QToolButton::InstantPopup);
    m_colorButton->setMenu(new QMenu(m_colorButton));
    m_colorButton->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    QPushButton* remove = button(tr("Remove"), this);
    for (QWidget* w : std::initializer_list<QWidget*>{newSection, addFolder, rename, up, down, m_colorButton, remove})
        side->addWidget(w);
    side->addStretch(1);
    top->addLayout(side);
    layout->addLayout(top, 3);

    layout->addWidget(new QLabel(tr("Section colors (hue: 0 red \u2026 0.33 green \u2026 0.58 blue \u2026 1 red)"), this));
    auto* paletteRow = new QHBoxLayout;
    m_paletteTable = new QTableWidget(0, 2, this);
    m_paletteTable->setAccessibleName(tr("Palette"));
    m_paletteTable->setHorizontalHeaderLabels({tr("Name"), tr("Hue")});
    m_paletteTable->horizontalHeader()->setStretchLastSection(true);
    m_paletteTable->verticalHeader()->hide();
    paletteRow->addWidget(m_paletteTable, 1);
    auto* paletteSide = new QVBoxLayout;
    QPushButton* addColor = button(tr("Add Color"), this);
    QPushButton* removeColor = button(tr("Remove Color"), this);
    QPushButton* savePaletteButton = button(tr("Save Palette"), this);
    paletteSide->addWidget(addColor);
    paletteSide->addWidget(removeColor);
    paletteSide->addWidget(savePaletteButton);
    paletteSide->addStretch(1);
    paletteRow->addLayout(paletteSide);
    layout->addLayout(paletteRow, 2);

    m_error = dialogFooterAdd(*this, *layout);

    connect(newSection, &QPushButton::clicked, this, &FavoritesManager::promptNewSection);
    connect(addFolder, &QPushButton::clicked, this, &FavoritesManager::promptAddFolders);
    connect(rename, &QPushButton::clicked, this, &FavoritesManager::promptRename);
    connect(up, &QPushButton::clicked, this, [this] { shiftCurrent(-1); });
    connect(down, &QPushButton::clicked, this, [this] { shiftCurrent(1); });
    connect(remove, &QPushButton::clicked, this, &FavoritesManager::removeCurrent);
    connect(m_colorButton->menu(), &QMenu::aboutToShow, this, &FavoritesManager::fillColorMenu);
    connect(addColor, &QPushButton::clicked, this, [this] {
        const int row = m_paletteTable->rowCount();
        m_paletteTable->insertRow(row);
        m_paletteTable->setItem(row, 0, new QTableWidgetItem(tr("New color")));
        m_paletteTable->setItem(row, 1, new QTableWidgetItem(QStringLiteral("0.5")));
        m_paletteTable->editItem(m_paletteTable->item(row, 0));
    });
    connect(removeColor, &QPushButton::clicked, this, [this] {
        if (m_paletteTable->currentRow() >= 0)
            m_paletteTable->removeRow(m_paletteTable->currentRow());
    });
    connect(savePaletteButton, &QPushButton::clicked, this, &FavoritesManager::paletteFromTable);
    connect(m_tree, &FavoritesTree::sectionDropped, this, [this](int from, int to) {
        if (from >= 0 && size_t(from) < m_file.secs.size())
            shiftSection(m_file.secs[size_t(from)].title, to - from);
    });
    connect(m_tree, &FavoritesTree::folderDropped, this, [this](int fromSection, int fromRow, int toSection, int toRow) {
        if (fromSection < 0 || toSection < 0 || size_t(fromSection) >= m_file.secs.size()
            || size_t(toSection) >= m_file.secs.size())
            return;
        const PinnedSec& from = m_file.secs[size_t(fromSection)];
        if (fromRow < 0 || size_t(fromRow) >= from.paths.size())
            return;
        moveFolder(expandTilde(from.paths[size_t(fromRow)]), m_file.secs[size_t(toSection)].title, toRow);
    });

    reload();
}

QString FavoritesManager::errorText() const
{
    return m_error->isHidden() ? QString() : m_error->text();
}

void FavoritesManager::showError(const QString& text)
{
    m_error->setText(text);
    m_error->setHidden(text.isEmpty());
}

void FavoritesManager::edit(std::function<bool()> change)
{
    showError({});
    ContextActions::edit(m_context, std::move(change));
    reload(); // queued behind the edit: the edit queue runs one task at a time, in order
}

void FavoritesManager::reload()
{
    const int64_t gen = ++m_generation;
    m_context.editQueue().submit(this, [this, gen]() -> std::function<void()> {
        PinnedFile file = pinnedRead();
        Palette palette = pinnedPalette();
        return [this, gen, file = std::move(file), palette = std::move(palette)] {
            if (gen == m_generation)
                display(file, palette);
        };
    });
}

void FavoritesManager::display(PinnedFile file, Palette palette)
{
    // The selection survives the rebuild: by title for a section, by path for a folder.
    const std::string selectedTitle = bytesOf(m_tree->currentItem(), kTitleRole);
    const std::string selectedPath = bytesOf(m_tree->currentItem(), kPathRole);
    m_file = std::move(file);
    m_palette = std::move(palette);
    const std::map<std::string, double> hues = pinnedAssignHues(m_file.secs, m_palette);
    m_tree->clear();
    QTreeWidgetItem* select = nullptr;
    for (const PinnedSec& sec : m_file.secs) {
        auto* item = new QTreeWidgetItem(m_tree, {decode(sec.title)});
        item->setData(0, kTitleRole, QByteArray::fromStdString(sec.title));
        item->setFlags(item->flags() | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled);
        if (auto hue = hues.find(sec.title); hue != hues.end())
            item->setIcon(0, swatch(hue->second));
        if (sec.title == selectedTitle && selectedPath.empty() && !select)
            select = item;
        for (const std::string& path : sec.paths) {
            auto* child = new QTreeWidgetItem(item, {decode(path)});
            child->setIcon(0, iconSymbol("folder"));
            child->setData(0, kTitleRole, QByteArray::fromStdString(sec.title));
            child->setData(0, kPathRole, QByteArray::fromStdString(expandTilde(path)));
            child->setFlags((child->flags() | Qt::ItemIsDragEnabled) & ~Qt::ItemIsDropEnabled);
            if (!selectedPath.empty() && configSamePath(path, selectedPath) && !select)
                select = child;
        }
        item->setExpanded(true);
    }
    if (select)
        m_tree->setCurrentItem(select);
    m_paletteTable->setRowCount(0);
    for (const PaletteEntry& entry : m_palette) {
        const int row = m_paletteTable->rowCount();
        m_paletteTable->insertRow(row);
        auto* name = new QTableWidgetItem(swatch(entry.hue), QString::fromStdString(entry.name));
        m_paletteTable->setItem(row, 0, name);
        m_paletteTable->setItem(row, 1, new QTableWidgetItem(QString::number(entry.hue)));
    }
    emit reloaded();
}

std::optional<size_t> FavoritesManager::currentSection() const
{
    QTreeWidgetItem* item = m_tree->currentItem();
    if (!item)
        return std::nullopt;
    QTreeWidgetItem* section = item->parent() ? item->parent() : item;
    const int index = m_tree->indexOfTopLevelItem(section);
    return index >= 0 && size_t(index) < m_file.secs.size() ? std::optional<size_t>(size_t(index)) : std::nullopt;
}

std::optional<std::string> FavoritesManager::currentFolder() const
{
    QTreeWidgetItem* item = m_tree->currentItem();
    return item && item->parent() ? std::optional<std::string>(bytesOf(item, kPathRole)) : std::nullopt;
}

// ---- the edits

void FavoritesManager::addSection(const std::string& title)
{
    if (auto what = configUnstorable(title)) {
        showError(tr("The section cannot be saved: its title holds %1.").arg(QString::fromStdString(*what)));
        return;
    }
    edit([title] { return pinnedAddSection(title); });
}

void FavoritesManager::addFolders(const std::string& section, const QStringList& chosen)
{
    edit([section, chosen] {
        bool changed = false;
        for (const QString& folder : chosen)
            changed |= pinnedAdd(pathBytesFromText(folder), section);
        return changed;
    });
}

void FavoritesManager::renameSection(const std::string& from, const std::string& to)
{
    if (auto what = configUnstorable(to)) {
        showError(tr("The section cannot be renamed: the new title holds %1.").arg(QString::fromStdString(*what)));
        return;
    }
    edit([from, to] {
        pinnedRenameSection(from, to);
        return true;
    });
}

void FavoritesManager::removeSection(const std::string& title)
{
    edit([title] { return pinnedRemoveSection(title); });
}

void FavoritesManager::removeFolder(const std::string& path)
{
    edit([path] { return pinnedRemove(path); });
}

void FavoritesManager::shiftSection(const std::string& title, int64_t by)
{
    edit([title, by] {
        pinnedShiftSection(title, by);
        return true;
    });
}

void FavoritesManager::moveFolder(const std::string& path, const std::string& section, int64_t row)
{
    edit([path, section, row] {
        const std::optional<std::string> from = pinnedSectionOf(path);
        if (!from)
            return false;
        if (*from != section) {
            // Another section: it leaves its own and joins the end of the other first.
            pinnedRemove(path);
            if (!pinnedAdd(path, section))
                return true;
        }
        const PinnedFile now = pinnedRead();
        const PinnedSec* sec = sectionTitled(now, section);
        const std::optional<int64_t> at = sec ? rowOf(*sec, path) : std::nullopt;
        if (at && row != *at)
            pinnedShift(path, row - *at);
        return *from != section || (at && row != *at);
    });
}

void FavoritesManager::setColor(const std::string& title, std::optional<double> hue)
{
    edit([title, hue] {
        pinnedSetColor(title, hue);
        return true;
    });
}

void FavoritesManager::savePalette(const Palette& palette)
{
    for (const PaletteEntry& entry : palette)
        if (auto what = paletteUnstorableName(entry.name)) {
            showError(tr("The palette cannot be saved: the name \u201c%1\u201d holds %2.")
                          .arg(QString::fromStdString(entry.name), QString::fromStdString(*what)));
            return;
        }
    edit([palette] { return paletteWrite(palette); });
}

// ---- the buttons

void FavoritesManager::promptNewSection()
{
    auto answer = ActionDialogs::current().prompt(this, tr("New Section"), tr("Name for the new favorites section:"), {});
    if (answer)
        addSection(QFile::encodeName(*answer).toStdString());
}

void FavoritesManager::promptAddFolders()
{
    const std::optional<size_t> index = currentSection();
    const std::string section = index ? m_file.secs[*index].title : std::string("Favorites");
    const QStringList chosen = ActionDialogs::current().chooseFolders(this, tr("Add to %1").arg(decode(section)));
    if (!chosen.isEmpty())
        addFolders(section, chosen);
}

void FavoritesManager::promptRename()
{
    const std::optional<size_t> index = currentSection();
    if (!index || currentFolder())
        return;
    const std::string& title = m_file.secs[*index].title;
    const QString shown = decode(title);
    auto answer = ActionDialogs::current().prompt(this, tr("Rename Section"), tr("New name:"), shown);
    if (!answer)
        return;
    // A title left as shown keeps its bytes, which need not be UTF-8; typed text is encoded.
    renameSection(title, *answer == shown.trimmed() ? title : QFile::encodeName(*answer).toStdString());
}

void FavoritesManager::removeCurrent()
{
    if (auto folder = currentFolder())
        removeFolder(*folder);
    else if (auto index = currentSection())
        removeSection(m_file.secs[*index].title);
}

void FavoritesManager::shiftCurrent(int64_t by)
{
    if (auto folder = currentFolder()) {
        QTreeWidgetItem* item = m_tree->currentItem();
        moveFolder(*folder, bytesOf(item, kTitleRole), item->parent()->indexOfChild(item) + by);
    } else if (auto index = currentSection()) {
        shiftSection(m_file.secs[*index].title, by);
    }
}

void FavoritesManager::fillColorMenu()
{
    QMenu* menu = m_colorButton->menu();
    menu->clear();
    const std::optional<size_t> index = currentSection();
    if (!index) {
        menu->addAction(tr("Select a section first"))->setEnabled(false);
        return;
    }
    const std::string title = m_file.secs[*index].title;
    for (const PaletteEntry& entry : m_palette)
        menu->addAction(swatch(entry.hue), QString::fromStdString(entry.name), this,
            [this, title, hue = entry.hue] { setColor(title, hue); });
    menu->addSeparator();
    menu->addAction(tr("Custom\u2026"), this, [this, title] {
        const QColor picked = QColorDialog::getColor(Qt::white, this, tr("Section Color"));
        if (picked.isValid())
            setColor(title, std::max(0.0, double(picked.toRgb().hsvHueF())));
    });
    menu->addAction(tr("Automatic"), this, [this, title] { setColor(title, std::nullopt); });
}

void FavoritesManager::paletteFromTable()
{
    Palette palette;
    for (int row = 0; row < m_paletteTable->rowCount(); ++row) {
        const QTableWidgetItem* name = m_paletteTable->item(row, 0);
        const QTableWidgetItem* hue = m_paletteTable->item(row, 1);
        bool ok = false;
        const double value = hue ? hue->text().trimmed().toDouble(&ok) : 0;
        if (!name || !ok) {
            showError(tr("Row %1: the hue must be a number from 0 to 1.").arg(row + 1));
            return;
        }
        palette.push_back({name->text().trimmed().toStdString(), value});
    }
    if (palette.empty()) {
        showError(tr("The palette needs at least one color."));
        return;
    }
    savePalette(palette);
}
