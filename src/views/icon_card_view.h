#pragma once
// The icon mode's view: the shown folder as a vertical stack of cards (Downloads, Drives
// and Favorites at the Computer root; elsewhere the folder's items, then Favorites).
// Custom-drawn on one widget: sections are placed by icon_layout's arithmetic and only
// the items on screen are drawn, so a folder of 100,000 entries costs no more to show
// than one of a hundred. The sections are built off the UI thread; a rebuild (a card
// changed, sizes arrived) keeps the scroll position and the selection.

#include "services/browser_context.h"
#include "views/content_hooks.h"
#include "views/icon_card_data.h"
#include "views/icon_layout.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>
#include <QPoint>
#include <QPointer>
#include <QTimer>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

class QLineEdit;
class QMenu;
class QRubberBand;

// One item of the view: its section and its place in it.
struct IconSpot {
    int section = -1;
    size_t index = 0;
    bool valid() const { return section >= 0; }
    bool operator==(const IconSpot&) const = default;
};

// The header controls a click can land on.
enum class IconControl { None, Chevron, Tune, ShowAll };

class IconCardView : public QAbstractScrollArea {
    Q_OBJECT
public:
    IconCardView(DirNodePtr root, std::vector<DirNodePtr> headers, const BrowserContext& context, ContentHooks hooks,
        QWidget* parent = nullptr);
    ~IconCardView() override;

    // Builds the sections again in the background (the card files are read afresh); the
    // scroll position and the selection stay.
    void reload();
    // Whether the first build has arrived.
    bool ready() const { return m_data != nullptr; }
    const IconCardData* data() const { return m_data.get(); }
    const IconLayout& layout() const { return m_layout; }

    std::vector<std::string> selectedPaths() const;
    // Selects the item of `path` alone and scrolls to it; before the first build has
    // arrived, once it does.
    bool selectPath(const std::string& path);
    IconSpot current() const { return m_current; }
    bool isSelected(IconSpot spot) const;
    void setCurrent(IconSpot spot, bool select = true);

    // Viewport rectangles.
    QRect itemRect(IconSpot spot) const;
    QRect controlRect(int section, IconControl control) const;
    IconSpot itemAt(QPoint viewportPos) const;
    IconControl controlAt(QPoint viewportPos, int* section) const;

    // The card menu of a section, built on the edit queue and popped up at `global`;
    // cardMenuShown tells when it is up.
    void openCardMenu(int section, QPoint global);
    // Clicks a header control, as the mouse does.
    void pressControl(int section, IconControl control);
    // Opens the item (a folder or a file), as Enter does.
    void activate(IconSpot spot);

    // The strip's horizontal scroll.
    int stripOffset(int section) const;

    // Renaming in place (icon_card_view_rename.cpp), as F2 or a slow second click does:
    // a field over the item's name (the current item's when none is given), with the
    // rename editor's rules. False when the item cannot be renamed here: only a folder's
    // own entries can, not favourites or drives. Before the first build has arrived, the
    // field opens once it does.
    bool beginRename(IconSpot spot = {});
    QLineEdit* renameField() const; // the open field, or null

signals:
    void loaded();              // a build has been shown
    void cardMenuShown(QMenu*); // the card menu is up

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void apply(IconCardDataPtr data);
    void relayout();
    void remember() const;
    bool showsPreviews() const;
    int contentTop() const; // the content y at the viewport's top
    QRect toViewport(const QRect& content) const;
    void scrollToSpot(IconSpot spot);
    void moveCurrent(int key, Qt::KeyboardModifiers mods);
    void selectRange(IconSpot from, IconSpot to);
    void bandSelect(const QRect& contentRect, bool add);
    void clearSelection();
    void typeAhead(const QString& text);
    void startDrag();
    void cardEdit(const IconCardSection& section, std::function<void(CardConfig&)> change);
    void announceSelection();
    bool renamable(IconSpot spot) const;
    QRect renameRect(IconSpot spot) const;
    // Keeps the field over its item after a rebuild, a scroll or a resize (closed when the
    // item is gone), or opens the one asked for before the first build.
    void renameFollow();
    // Closes the field; `commit` hands a changed, valid name to the rename hook.
    enum class RenameEnd { Commit, Drop };
    void renameEnd(RenameEnd end);

    DirNodePtr m_root;
    std::vector<DirNodePtr> m_headers;
    BrowserContext m_context;
    ContentHooks m_hooks;
    IconCardDataPtr m_data;
    IconLayout m_layout;
    std::vector<std::vector<bool>> m_selected; // per section, per item
    size_t m_selectedCount = 0;
    IconSpot m_current;
    IconSpot m_anchor;
    std::map<int, int> m_stripOffsets;
    int64_t m_generation = 0;
    std::string m_selectOnArrival; // asked for before the first build arrived

    // Mouse.
    QPoint m_pressPos;
    QPoint m_pressContent;
    IconSpot m_pressSpot;
    bool m_banding = false;
    bool m_bandAdd = false;
    QRubberBand* m_band = nullptr;
    std::vector<std::vector<bool>> m_bandBase; // the selection before the band started
    bool m_pressAgain = false; // the press landed on the item already selected alone
    // Type-ahead.
    QString m_typed;
    QElapsedTimer m_typedAt;
    // Rename in place.
    QPointer<QLineEdit> m_renameField;
    std::string m_renamePath;
    QString m_renameName;
    bool m_renameOnArrival = false;
    QTimer m_renameClick; // a slow second click opens the field unless a double click follows
};

// Makes every icon view of the process build its sections again (a card changed here).
void iconCardViewsReload();
