#include "window/browser_toolbar.h"

#include "window/theme_icons.h"

#include <QActionGroup>
#include <QSizePolicy>

BrowserToolbar::BrowserToolbar(QWidget* parent)
    : QToolBar(QStringLiteral("Toolbar"), parent)
{
    setObjectName(QStringLiteral("BrowserToolbar"));
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    setMovable(false);
    setIconSize(QSize(18, 18));

    connect(addItem("back", QStringLiteral("Back"), "chevron.left"), &QAction::triggered, this,
        &BrowserToolbar::backTriggered);
    connect(addItem("forward", QStringLiteral("Forward"), "chevron.right"), &QAction::triggered, this,
        &BrowserToolbar::forwardTriggered);
    addSeparator();

    m_modes = new QActionGroup(this);
    m_modes->setObjectName(QStringLiteral("viewmode"));
    m_modes->setExclusive(true);
    const std::pair<const char*, const char*> segments[] = {{"Icons", "square.grid.2x2"}, {"List", "list.bullet"},
        {"Columns", "rectangle.split.3x1"}, {"Peek", "square.stack"}};
    int index = 0;
    for (const auto& [label, symbol] : segments) {
        QAction* segment = addAction(iconSymbol(symbol), QString::fromLatin1(label));
        segment->setObjectName(QStringLiteral("viewmode.") + QString::number(index));
        segment->setToolTip(QStringLiteral("View: ") + QString::fromLatin1(label));
        segment->setCheckable(true);
        segment->setData(index++);
        m_modes->addAction(segment);
    }
    syncMode(ViewMode::List);
    connect(m_modes, &QActionGroup::triggered, this,
        [this](QAction* segment) { emit modeChosen(ViewMode(segment->data().toInt())); });

    auto* space = new QWidget(this);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(space);

    connect(addItem("split", QStringLiteral("Split View"), "rectangle.split.2x1"), &QAction::triggered, this,
        &BrowserToolbar::splitTriggered);
    connect(addItem("info", QStringLiteral("Info"), "info.circle"), &QAction::triggered, this,
        &BrowserToolbar::infoTriggered);
    connect(addItem("trash", QStringLiteral("Trash"), "trash"), &QAction::triggered, this,
        &BrowserToolbar::trashTriggered);
}

QAction* BrowserToolbar::addItem(const char* identifier, const QString& label, const char* symbol)
{
    QAction* action = addAction(iconSymbol(symbol), label);
    action->setObjectName(QString::fromLatin1(identifier));
    action->setToolTip(label);
    return action;
}

QAction* BrowserToolbar::item(const char* identifier) const
{
    return findChild<QAction*>(QString::fromLatin1(identifier));
}

void BrowserToolbar::syncMode(ViewMode mode)
{
    const auto segments = m_modes->actions();
    if (int(mode) < segments.size())
        segments[int(mode)]->setChecked(true);
}

ViewMode BrowserToolbar::selectedMode() const
{
    QAction* checked = m_modes->checkedAction();
    return checked ? ViewMode(checked->data().toInt()) : ViewMode::List;
}
