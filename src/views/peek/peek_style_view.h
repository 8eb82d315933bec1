#pragma once
// What every Peek style shares: the chain of folder levels opened so far (the root
// first), their reading off the UI thread with stale results dropped, the keys (arrows
// move the current plate, Enter opens, Backspace or Ctrl+[ climbs, Escape is the
// style's), and the animation helpers (durations stretched by --slow, frames counted
// for the benchmark). A style only lays its levels out: it is told when a level's
// plates arrive (showLevel) and when levels go (dropLevels), and makes each level's
// plates with makeGrid.

#include "cards/lab_item.h"
#include "services/browser_context.h"
#include "views/content_hooks.h"
#include "views/peek/peek_plate_grid.h"

#include <QBoxLayout>
#include <QEasingCurve>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class QAbstractAnimation;
class QFrame;
class QScrollArea;

// Where a style starts and what it may use.
struct PeekSetup {
    std::string rootPath;
    bool computerRoot = false; // the root lists Home and the drives
    BrowserContext context;
    ContentHooks hooks;
};

class PeekStyleView : public QWidget {
    Q_OBJECT
public:
    // Plates shown per folder; a "+ N more" plate stands for the rest.
    static constexpr int64_t kLimit = 200;

    explicit PeekStyleView(PeekSetup setup, QWidget* parent = nullptr);
    ~PeekStyleView() override;

    // Reads the root level (once the style is in place).
    void start();

    int levelCount() const { return int(m_levels.size()); }
    // The level the keys act on: the deepest, unless the style shows another.
    virtual int focusLevel() const { return levelCount() - 1; }
    // The folder of the focus level ("" before the root arrives).
    std::string currentFolder() const;
    // A level is being read.
    bool busy() const { return !m_pendingPath.empty(); }
    // The plates of a level (null before it arrives).
    PeekPlateGrid* grid(int level) const;

    // A plate of `level` pressed: a folder opens as the next level (deeper ones go), a
    // file opens in its application.
    void openItem(int level, int index);
    // Back to the level above the focus level.
    void climb();
    // Keeps levels 0 to `level`, drops the rest.
    void climbTo(int level);

signals:
    void levelShown(int level);   // its plates are in place
    void frameDrawn(int level);   // its plates were painted for the first time
    void animationTick();         // an animation moved one frame

protected:
    struct Level {
        std::string path;
        QString title;
        std::vector<LabItem> items;
        int64_t total = 0;
        PeekPlateGrid* grid = nullptr;
    };
    const Level& level(int index) const { return m_levels.at(size_t(index)); }

    // Level `index` arrived: make its plates (makeGrid) and put them in place.
    virtual void showLevel(int index) = 0;
    // Levels `from` and deeper are about to go: take their widgets away.
    virtual void dropLevels(int from) = 0;
    // Escape: nothing unless the style has something to close.
    virtual void escape() {}
    // The current plate of `level` moved (default: scrolled into view).
    virtual void currentMoved(int level);

    // The plates of `index`, wired to open what is pressed.
    PeekPlateGrid* makeGrid(int index, PeekPlateGrid::Flow flow, PeekPlate::Size size, QWidget* parent);
    // An animation's length: `ms` (0.2 to 0.35 s), six times that with --slow, none
    // when the windows do not animate.
    int duration(int ms = 250) const;
    bool noPopoverAnimation() const { return m_setup.context.peekNoAnim; }
    // Runs `animation` (owned from now on, frames counted); with a zero duration every
    // property jumps to its end at once. `done` runs when it ends.
    void run(QAbstractAnimation* animation, std::function<void()> done = {});
    // One property animation, ready for run() or a group.
    QAbstractAnimation* tween(QObject* target, const char* property, const QVariant& from, const QVariant& to,
        int ms, QEasingCurve curve = QEasingCurve::OutCubic);

    // Grows `widget` from nothing to `target` pixels along `orientation` (a level
    // sliding open), then lets it size freely again.
    void growIn(QWidget* widget, Qt::Orientation orientation, int target, int ms);
    // Fades `widget` in.
    void fadeIn(QWidget* widget, int ms);
    // A frameless scroll area that scrolls one way.
    static QScrollArea* scrollArea(Qt::Orientation orientation, QWidget* content = nullptr);
    // A framed panel on `ground` with an empty vertical layout (margins `margin`), for a
    // level that floats over the others (a popover, a card, a pane).
    static QFrame* panel(QWidget* parent, QPalette::ColorRole ground, int margin = 0);
    // Fills the view with one scroll area (scrolling along `orientation`) and returns it.
    QScrollArea* fillArea(Qt::Orientation orientation = Qt::Vertical, QWidget* content = nullptr);
    // Fills the view with a scrolling strip of levels laid out along `direction` (top to
    // bottom or left to right), and returns the strip's layout, whose last item is a
    // stretch: insert levels before it. `area` receives the scroll area.
    QBoxLayout* fillStrip(QBoxLayout::Direction direction, QScrollArea** area);
    // Keeps `widget` in view of `area` while the area's extent changes (a level growing in).
    static void keepInView(QScrollArea* area, QWidget* widget);
    // Takes away the widgets past the first `keep` of `widgets`.
    template <typename W>
    static void dropTail(std::vector<W*>& widgets, int keep)
    {
        while (int(widgets.size()) > std::max(keep, 0)) {
            widgets.back()->hide();
            widgets.back()->deleteLater();
            widgets.pop_back();
        }
    }
    // Shows `content` in `area`; what the area showed before is kept, hidden, for a
    // climb back to it.
    void swapInto(QScrollArea* area, QWidget* content);
    // Frees the plates of levels `from` and deeper.
    void deleteGrids(int from);

    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void load(const std::string& path, const QString& title, bool computer);

    PeekSetup m_setup;
    std::vector<Level> m_levels;
    std::string m_pendingPath;
    uint64_t m_generation = 0;
};

// Styles by their key (LabVariant::key()): a style's file says PEEK_STYLE("key", Class).
using PeekStyleMaker = PeekStyleView* (*)(PeekSetup setup);
bool peekStyleAdd(const char* key, PeekStyleMaker make);
// The style of `key`; null when no style has that key.
PeekStyleView* peekStyleMake(const std::string& key, PeekSetup setup);

#define PEEK_STYLE(key, Class)                                                                         \
    namespace {                                                                                        \
    [[maybe_unused]] const bool s_peekStyleAdded =                                                     \
        peekStyleAdd(key, [](PeekSetup setup) -> PeekStyleView* { return new Class(std::move(setup)); }); \
    }
