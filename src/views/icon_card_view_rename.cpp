// Renaming in place in the icon view: a line field over the item's name, opened by F2
// (the window's Rename) or a slow second click, closed by Return (a changed, valid name
// goes to the rename hook, as the list and column views' editor does), Escape, or the
// focus leaving it.

#include "views/icon_card_paint.h"
#include "views/icon_card_view.h"
#include "views/rename_editor.h"

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStyleHints>

namespace {

constexpr int kFieldMinWidth = 140;

} // namespace

QLineEdit* IconCardView::renameField() const
{
    return m_renameField;
}

bool IconCardView::renamable(IconSpot spot) const
{
    // The folder's own entries (its records), as in the list view: favourites and drives
    // are places, not names to change.
    return m_data && spot.valid() && size_t(spot.section) < m_data->sections.size()
        && m_data->sections[size_t(spot.section)].records && spot.index < m_data->count(spot.section);
}

QRect IconCardView::renameRect(IconSpot spot) const
{
    const IconSec& sec = m_data->sections[size_t(spot.section)].sec;
    const QRect cell = itemRect(spot);
    const QRect label = iconLabelRect(cell, int(sec.iconSize), sec.list ? IconShape::ListRow : IconShape::Item,
        fontMetrics());
    const int height = m_renameField ? m_renameField->sizeHint().height() : label.height();
    QRect field(label.left(), label.top(), label.width(), height);
    if (!sec.list && field.width() < kFieldMinWidth) // a narrow cell: wider, around its middle
        field = QRect(label.center().x() - kFieldMinWidth / 2, label.top(), kFieldMinWidth, height);
    field.moveLeft(std::clamp(field.left(), 0, std::max(0, viewport()->width() - field.width())));
    return field;
}

bool IconCardView::beginRename(IconSpot spot)
{
    if (!m_data) {
        m_renameOnArrival = true; // with the selection asked for, once the build is in
        return true;
    }
    if (!spot.valid())
        spot = m_current;
    if (!renamable(spot))
        return false;
    renameEnd(RenameEnd::Commit); // one field at a time
    if (!(m_current == spot) || !isSelected(spot))
        setCurrent(spot);
    scrollToSpot(spot);
    m_renamePath = m_data->path(spot.section, spot.index);
    m_renameName = m_data->name(spot.section, spot.index);
    auto* field = new QLineEdit(viewport());
    m_renameField = field;
    renameFieldPrepare(*field, m_renameName, m_data->isDir(spot.section, spot.index));
    field->installEventFilter(this);
    field->setGeometry(renameRect(spot));
    field->show();
    field->setFocus(Qt::OtherFocusReason);
    return true;
}

void IconCardView::renameEnd(RenameEnd end)
{
    QLineEdit* field = m_renameField;
    if (!field)
        return;
    m_renameField = nullptr; // before hiding it: its focus leaving comes back here
    const QString text = field->text();
    const bool hadFocus = field->hasFocus();
    field->hide();
    field->deleteLater();
    if (hadFocus)
        setFocus(Qt::OtherFocusReason);
    if (end == RenameEnd::Commit && text != m_renameName && !renameProblem(text) && m_hooks.rename)
        m_hooks.rename(m_renamePath, QFile::encodeName(text).toStdString());
}

void IconCardView::renameFollow()
{
    if (m_renameOnArrival && m_data) {
        m_renameOnArrival = false;
        beginRename();
        return;
    }
    if (!m_renameField || !m_data)
        return;
    for (size_t s = 0; s < m_data->sections.size(); ++s) {
        if (!m_data->sections[s].records)
            continue;
        for (size_t i = 0; i < m_data->sections[s].count(); ++i)
            if (m_data->path(int(s), i) == m_renamePath) {
                m_renameField->setGeometry(renameRect({int(s), i}));
                return;
            }
    }
    renameEnd(RenameEnd::Drop); // renamed or removed meanwhile by someone else
}

bool IconCardView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_renameField || !m_renameField)
        return QAbstractScrollArea::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (!renameFieldRefuses(*m_renameField)) // a bad name: say why and keep editing
                renameEnd(RenameEnd::Commit);
            return true;
        case Qt::Key_Escape:
            renameEnd(RenameEnd::Drop);
            return true;
        default:
            break;
        }
    } else if (event->type() == QEvent::FocusOut) {
        // Clicked elsewhere: a good name is taken, a bad one dropped (as the list's editor).
        // The field's own menu or another window in front leave it open.
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
            renameEnd(RenameEnd::Commit);
    }
    return QAbstractScrollArea::eventFilter(watched, event);
}
