#include "views/peek/peek_style_view.h"

#include "services/scan_service.h"

#include <QAbstractAnimation>
#include <QAnimationGroup>
#include <QGraphicsOpacityEffect>
#include <QKeyEvent>
#include <QPropertyAnimation>
#include <QVBoxLayout>
#include <QScrollArea>
#include <QScrollBar>

#include <map>

namespace {

std::map<std::string, PeekStyleMaker>& makers()
{
    static std::map<std::string, PeekStyleMaker> table;
    return table;
}

QString lastName(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    return QString::fromStdString(name.empty() ? path : name);
}

// Sets every property the animation would end on, at once.
void jumpToEnd(QAbstractAnimation* animation)
{
    if (auto* group = qobject_cast<QAnimationGroup*>(animation)) {
        for (int i = 0; i < group->animationCount(); ++i)
            jumpToEnd(group->animationAt(i));
    } else if (auto* tween = qobject_cast<QPropertyAnimation*>(animation)) {
        if (tween->targetObject())
            tween->targetObject()->setProperty(tween->propertyName(), tween->endValue());
    }
}

} // namespace

bool peekStyleAdd(const char* key, PeekStyleMaker make)
{
    makers()[key] = make;
    return true;
}

PeekStyleView* peekStyleMake(const std::string& key, PeekSetup setup)
{
    auto it = makers().find(key);
    return it == makers().end() ? nullptr : it->second(std::move(setup));
}

PeekStyleView::PeekStyleView(PeekSetup setup, QWidget* parent)
    : QWidget(parent)
    , m_setup(std::move(setup))
{
    setFocusPolicy(Qt::StrongFocus);
}

PeekStyleView::~PeekStyleView()
{
    // Running animations would call back into the style being taken down: cut them
    // first.
    for (QAbstractAnimation* animation : findChildren<QAbstractAnimation*>(Qt::FindDirectChildrenOnly)) {
        QObject::disconnect(animation, nullptr, nullptr, nullptr);
        delete animation;
    }
}

void PeekStyleView::start()
{
    load(m_setup.rootPath, m_setup.computerRoot ? tr("Computer") : lastName(m_setup.rootPath), m_setup.computerRoot);
}

std::string PeekStyleView::currentFolder() const
{
    const int focus = focusLevel();
    return focus >= 0 && focus < levelCount() ? level(focus).path : std::string();
}

PeekPlateGrid* PeekStyleView::grid(int index) const
{
    return index >= 0 && index < levelCount() ? level(index).grid : nullptr;
}

void PeekStyleView::load(const std::string& path, const QString& title, bool computer)
{
    const uint64_t generation = ++m_generation;
    m_pendingPath = path;
    m_setup.context.scans->submit(this, [this, path, title, computer, generation]() -> std::function<void()> {
        Level next;
        next.path = path;
        next.title = title;
        if (computer) {
            next.items = labDataOverview();
            next.total = int64_t(next.items.size());
        } else {
            LabListing listing = labList(path, kLimit);
            next.items = labItemsOf(path, listing.names);
            next.total = listing.total;
        }
        return [this, generation, next = std::move(next)]() mutable {
            if (generation != m_generation)
                return; // the user went elsewhere meanwhile
            m_pendingPath.clear();
            m_levels.push_back(std::move(next));
            const int index = levelCount() - 1;
            showLevel(index);
            emit levelShown(index);
        };
    });
}

void PeekStyleView::openItem(int levelIndex, int index)
{
    if (levelIndex < 0 || levelIndex >= levelCount() || index < 0 || index >= int(level(levelIndex).items.size()))
        return;
    const LabItem item = level(levelIndex).items[size_t(index)];
    if (PeekPlateGrid* plates = level(levelIndex).grid)
        plates->setCurrent(index);
    if (!item.isDir) {
        if (m_setup.hooks.openFile)
            m_setup.hooks.openFile(item.path);
        return;
    }
    if (levelIndex + 1 < levelCount()) {
        dropLevels(levelIndex + 1);
        m_levels.resize(size_t(levelIndex + 1));
    }
    if (PeekPlateGrid* plates = level(levelIndex).grid)
        plates->setOpened(index);
    load(item.path, QString::fromStdString(item.name), false);
}

void PeekStyleView::climb()
{
    const int focus = focusLevel();
    if (focus >= 1)
        climbTo(focus - 1);
}

void PeekStyleView::climbTo(int levelIndex)
{
    if (levelIndex < 0 || levelIndex >= levelCount())
        return;
    ++m_generation; // a level still being read is no longer wanted
    m_pendingPath.clear();
    if (levelIndex + 1 < levelCount()) {
        dropLevels(levelIndex + 1);
        m_levels.resize(size_t(levelIndex + 1));
    }
    if (PeekPlateGrid* plates = level(levelIndex).grid)
        plates->setOpened(-1);
}

void PeekStyleView::currentMoved(int levelIndex)
{
    PeekPlateGrid* plates = grid(levelIndex);
    if (!plates)
        return;
    PeekPlate* plate = plates->plate(plates->current());
    for (QWidget* w = plates->parentWidget(); w && w != this->parentWidget(); w = w->parentWidget())
        if (auto* area = qobject_cast<QScrollArea*>(w)) {
            area->ensureWidgetVisible(plate, 8, 8);
            break;
        }
}

PeekPlateGrid* PeekStyleView::makeGrid(int index, PeekPlateGrid::Flow flow, PeekPlate::Size size, QWidget* parent)
{
    Level& shown = m_levels.at(size_t(index));
    auto* plates = new PeekPlateGrid(shown.items, shown.total, shown.path, flow, size, parent);
    plates->setProperty("peekLevel", index);
    plates->installEventFilter(this);
    connect(plates, &PeekPlateGrid::pressed, this, [this, plates](int item) {
        const int at = plates->property("peekLevel").toInt();
        if (grid(at) == plates)
            openItem(at, item);
    });
    connect(plates, &PeekPlateGrid::moreRequested, this, [this, folder = shown.path] {
        if (m_setup.hooks.showInList)
            m_setup.hooks.showInList(folder);
    });
    shown.grid = plates;
    return plates;
}

bool PeekStyleView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Paint) {
        if (auto* plates = qobject_cast<PeekPlateGrid*>(watched)) {
            plates->removeEventFilter(this); // the first frame only
            emit frameDrawn(plates->property("peekLevel").toInt());
        }
    }
    return QWidget::eventFilter(watched, event);
}

int PeekStyleView::duration(int ms) const
{
    if (!m_setup.context.animate)
        return 0;
    return m_setup.context.peekSlow ? ms * 6 : ms;
}

QAbstractAnimation* PeekStyleView::tween(QObject* target, const char* property, const QVariant& from,
    const QVariant& to, int ms, QEasingCurve curve)
{
    auto* animation = new QPropertyAnimation(target, property);
    animation->setStartValue(from);
    animation->setEndValue(to);
    animation->setDuration(ms);
    animation->setEasingCurve(curve);
    connect(animation, &QVariantAnimation::valueChanged, this, &PeekStyleView::animationTick);
    return animation;
}

void PeekStyleView::run(QAbstractAnimation* animation, std::function<void()> done)
{
    if (animation->totalDuration() <= 0) {
        jumpToEnd(animation);
        delete animation;
        if (done)
            done();
        return;
    }
    animation->setParent(this);
    if (done)
        connect(animation, &QAbstractAnimation::finished, this, std::move(done));
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void PeekStyleView::growIn(QWidget* widget, Qt::Orientation orientation, int target, int ms)
{
    const char* property = orientation == Qt::Horizontal ? "maximumWidth" : "maximumHeight";
    QPointer<QWidget> guard(widget);
    run(tween(widget, property, 0, std::max(target, 1), ms), [guard, property] {
        if (guard)
            guard->setProperty(property, QWIDGETSIZE_MAX);
    });
}

void PeekStyleView::fadeIn(QWidget* widget, int ms)
{
    if (ms <= 0)
        return;
    auto* effect = new QGraphicsOpacityEffect(widget);
    effect->setOpacity(0);
    widget->setGraphicsEffect(effect);
    QPointer<QWidget> guard(widget);
    // The effect draws through an off-screen copy: gone once the fade ends.
    run(tween(effect, "opacity", 0.0, 1.0, ms), [guard] {
        if (guard)
            guard->setGraphicsEffect(nullptr);
    });
}

QScrollArea* PeekStyleView::scrollArea(Qt::Orientation orientation, QWidget* content)
{
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setHorizontalScrollBarPolicy(orientation == Qt::Horizontal ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    area->setVerticalScrollBarPolicy(orientation == Qt::Vertical ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    if (content)
        area->setWidget(content);
    return area;
}

QFrame* PeekStyleView::panel(QWidget* parent, QPalette::ColorRole ground, int margin)
{
    auto* frame = new QFrame(parent);
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setAutoFillBackground(true);
    frame->setBackgroundRole(ground);
    auto* box = new QVBoxLayout(frame);
    box->setContentsMargins(margin, margin, margin, margin);
    box->setSpacing(0);
    return frame;
}

QScrollArea* PeekStyleView::fillArea(Qt::Orientation orientation, QWidget* content)
{
    QScrollArea* area = scrollArea(orientation, content);
    auto* box = new QVBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    box->addWidget(area);
    return area;
}

QBoxLayout* PeekStyleView::fillStrip(QBoxLayout::Direction direction, QScrollArea** area)
{
    auto* strip = new QWidget;
    auto* levels = new QBoxLayout(direction, strip);
    levels->setContentsMargins(0, 0, 0, 0);
    levels->setSpacing(direction == QBoxLayout::LeftToRight ? 1 : 4);
    levels->addStretch(1);
    QScrollArea* made = fillArea(direction == QBoxLayout::LeftToRight ? Qt::Horizontal : Qt::Vertical, strip);
    if (area)
        *area = made;
    return levels;
}

void PeekStyleView::keepInView(QScrollArea* area, QWidget* widget)
{
    QPointer<QWidget> guard(widget);
    auto follow = [area, guard] {
        if (guard)
            area->ensureWidgetVisible(guard, 0, 0);
    };
    connect(area->verticalScrollBar(), &QScrollBar::rangeChanged, widget, follow);
    connect(area->horizontalScrollBar(), &QScrollBar::rangeChanged, widget, follow);
}

void PeekStyleView::swapInto(QScrollArea* area, QWidget* content)
{
    if (area->widget() == content)
        return;
    if (QWidget* old = area->takeWidget()) {
        old->hide();
        old->setParent(this);
        old->hide();
    }
    area->setWidget(content);
    content->show();
}

void PeekStyleView::deleteGrids(int from)
{
    for (int i = std::max(from, 0); i < levelCount(); ++i)
        if (PeekPlateGrid* plates = m_levels[size_t(i)].grid) {
            plates->hide();
            plates->deleteLater();
            m_levels[size_t(i)].grid = nullptr;
        }
}

bool PeekStyleView::event(QEvent* event)
{
    // The window's shortcuts would take these keys first (Ctrl+[ is Back): while the
    // style has somewhere to climb to, they are the style's.
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        const Qt::KeyboardModifiers mods = key->modifiers() & ~Qt::KeypadModifier;
        const bool plain = mods == Qt::NoModifier;
        const bool climbKey = (plain && key->key() == Qt::Key_Backspace)
            || (mods == Qt::ControlModifier && key->key() == Qt::Key_BracketLeft);
        const bool ours = (climbKey && focusLevel() >= 1)
            || (plain && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter || key->key() == Qt::Key_Escape
                    || key->key() == Qt::Key_Left || key->key() == Qt::Key_Right || key->key() == Qt::Key_Up
                    || key->key() == Qt::Key_Down));
        if (ours) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void PeekStyleView::keyPressEvent(QKeyEvent* event)
{
    const int focus = focusLevel();
    PeekPlateGrid* plates = grid(focus);
    const bool ctrl = event->modifiers() & Qt::ControlModifier;
    int step = 0;
    switch (event->key()) {
    case Qt::Key_Right: step = 1; break;
    case Qt::Key_Left: step = -1; break;
    case Qt::Key_Down: step = plates && plates->columns() > 1 ? plates->columns() : 1; break;
    case Qt::Key_Up: step = plates && plates->columns() > 1 ? -plates->columns() : -1; break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (plates)
            openItem(focus, plates->current());
        return;
    case Qt::Key_Backspace:
        climb();
        return;
    case Qt::Key_BracketLeft:
        if (ctrl) {
            climb();
            return;
        }
        break;
    case Qt::Key_Escape:
        escape();
        return;
    default: break;
    }
    if (step != 0 && plates) {
        const int next = plates->current() + step;
        if (next >= 0 && next < plates->count()) {
            plates->setCurrent(next);
            currentMoved(focus);
        }
        return;
    }
    QWidget::keyPressEvent(event);
}
