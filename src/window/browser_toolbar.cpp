#include "window/browser_toolbar.h"

#include "services/view_modes.h"
#include "services/shortcuts.h"
#include "services/theme_icons.h"

#include <QActionGroup>
#include <QMenu>
#include <QSizePolicy>
#include <QToolButton>

BrowserToolbar::BrowserToolbar(QWidget* parent)
    : QToolBar(tr("Toolbar"), parent)
{
    setObjectName(QStringLiteral("BrowserToolbar"));
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    setMovable(false);
    setIconSize(QSize(18, 18));
    setAccessibleName(tr("Toolbar"));

    connect(addItem("back", tr("Back"), shortcutTip(tr("Back"), Shortcut::Back),
                tr("Goes back to the previous folder of the active pane"), "chevron.left"),
        &QAction::triggered, this, &BrowserToolbar::backTriggered);
    connect(addItem("forward", tr("Forward"), shortcutTip(tr("Forward"), Shortcut::Forward),
                tr("Goes forward again in the active pane"), "chevron.right"),
        &QAction::triggered, this, &BrowserToolbar::forwardTriggered);
    addSeparator();

    m_modes = new QActionGroup(this);
    m_modes->setObjectName(QStringLiteral("viewmode"));
    m_modes->setExclusive(true);
    for (const ViewModeItem& mode : viewModeItems()) {
        const QString shown = viewModeName(mode);
        QAction* segment = addAction(iconSymbol(mode.symbol), shown);
        segment->setObjectName(QStringLiteral("viewmode.") + QString::number(int(mode.mode)));
        segment->setToolTip(shortcutTip(tr("View: %1").arg(shown), mode.key));
        segment->setCheckable(true);
        segment->setData(int(mode.mode));
        m_modes->addAction(segment);
        describe(segment, tr("View as %1").arg(shown), tr("Shows the active pane as %1").arg(shown));
    }
    syncMode(ViewMode::List);
    connect(m_modes, &QActionGroup::triggered, this,
        [this](QAction* segment) { emit modeChosen(ViewMode(segment->data().toInt())); });

    auto* space = new QWidget(this);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(space);

    connect(addItem("split", tr("Split View"), shortcutTip(tr("Split View"), Shortcut::SplitRight),
                tr("Splits the active pane side by side"), "rectangle.split.2x1"),
        &QAction::triggered, this, &BrowserToolbar::splitTriggered);
    // Its menu comes from the menu setup.
    addItem("info", tr("Info"), tr("Info"), tr("Chooses the size information shown beside items"), "info.circle");
    connect(addItem("trash", tr("Trash"), shortcutTip(tr("Move to Trash"), Shortcut::Trash),
                tr("Moves the selected items to the Trash"), "trash"),
        &QAction::triggered, this, &BrowserToolbar::trashTriggered);
    // Qt's own button for the items that do not fit.
    if (auto* more = findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"))) {
        more->setAccessibleName(tr("More"));
        more->setAccessibleDescription(tr("Shows the toolbar items that do not fit"));
    }
}

QAction* BrowserToolbar::addItem(const char* identifier, const QString& label, const QString& tip,
    const QString& description, const char* symbol)
{
    QAction* action = addAction(iconSymbol(symbol), label);
    action->setObjectName(QString::fromLatin1(identifier));
    action->setToolTip(tip);
    describe(action, label, description);
    return action;
}

void BrowserToolbar::describe(QAction* action, const QString& label, const QString& description)
{
    if (QWidget* button = widgetForAction(action)) {
        button->setAccessibleName(label);
        button->setAccessibleDescription(description);
    }
}

QAction* BrowserToolbar::item(const char* identifier) const
{
    return findChild<QAction*>(QString::fromLatin1(identifier));
}

void BrowserToolbar::syncMode(ViewMode mode)
{
    for (QAction* segment : m_modes->actions())
        if (segment->data().toInt() == int(mode))
            segment->setChecked(true);
}

ViewMode BrowserToolbar::selectedMode() const
{
    QAction* checked = m_modes->checkedAction();
    return checked ? ViewMode(checked->data().toInt()) : ViewMode::List;
}

void BrowserToolbar::setItemMenu(const char* identifier, QMenu* menu)
{
    QAction* action = item(identifier);
    action->setMenu(menu);
    if (auto* button = qobject_cast<QToolButton*>(widgetForAction(action)))
        button->setPopupMode(QToolButton::InstantPopup);
}

void BrowserToolbar::setTrashFull(bool full)
{
    m_trashFull = full;
    if (QAction* trash = item("trash"))
        trash->setIcon(QIcon::fromTheme(full ? QStringLiteral("user-trash-full") : QStringLiteral("user-trash"),
            iconSymbol("trash")));
}
