#pragma once
// The favourites manager: the favourites sections with their folders, to add, remove,
// rename, recolour and reorder (with buttons or by dragging), and the palette of section
// colours. Every edit is one of the favourites file's own operations, run on the edit
// queue after the edits before it; every window refreshes, then this window reads the
// files again.

#include "config/palette.h"
#include "config/pinned_file.h"

#include <QDialog>
#include <QTreeWidget>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

class QLabel;
class QTableWidget;
class QToolButton;
struct BrowserContext;

// The sections tree; a drop is turned into a move request, the tree itself is rebuilt
// from the file afterwards.
class FavoritesTree : public QTreeWidget {
    Q_OBJECT
public:
    explicit FavoritesTree(QWidget* parent = nullptr);

signals:
    // A section dragged to position `toIndex` among the sections (the index it will have).
    void sectionDropped(int fromIndex, int toIndex);
    // A folder dragged to position `toRow` of section `toSection`.
    void folderDropped(int fromSection, int fromRow, int toSection, int toRow);

protected:
    void dropEvent(QDropEvent* event) override;
};

// Where an item moved to index `insertBefore` of its list ends up: one less when it
// came from above, as it no longer takes a place there.
int favoritesLandingIndex(int from, int insertBefore);

class FavoritesManager : public QDialog {
    Q_OBJECT
public:
    explicit FavoritesManager(const BrowserContext& context, QWidget* parent = nullptr);

    // The edits, as the buttons and drops make them. Paths are absolute.
    void addSection(const std::string& title);
    void addFolders(const std::string& section, const QStringList& chosen);
    void renameSection(const std::string& from, const std::string& to);
    void removeSection(const std::string& title);
    void removeFolder(const std::string& path);
    void shiftSection(const std::string& title, int64_t by);
    // Moves a folder to index `row` of section `section` (its own or another).
    void moveFolder(const std::string& path, const std::string& section, int64_t row);
    void setColor(const std::string& title, std::optional<double> hue);
    void savePalette(const Palette& palette);

    // Reads the files again (in the background) and shows them.
    void reload();

    FavoritesTree* tree() const { return m_tree; }
    QTableWidget* paletteTable() const { return m_paletteTable; }
    const PinnedFile& shown() const { return m_file; }
    const Palette& palette() const { return m_palette; }
    QString errorText() const;

signals:
    void reloaded();

private:
    void edit(std::function<bool()> change);
    void display(PinnedFile file, Palette palette);
    void showError(const QString& text);
    // The section (and folder, when a folder is selected) of the current item.
    std::optional<size_t> currentSection() const;
    std::optional<std::string> currentFolder() const;
    void fillColorMenu();
    void promptNewSection();
    void promptAddFolders();
    void promptRename();
    void removeCurrent();
    void shiftCurrent(int64_t by);
    void paletteFromTable();

    const BrowserContext& m_context;
    FavoritesTree* m_tree = nullptr;
    QToolButton* m_colorButton = nullptr;
    QTableWidget* m_paletteTable = nullptr;
    QLabel* m_error = nullptr;
    PinnedFile m_file;
    Palette m_palette;
    int64_t m_generation = 0;
};
