#include "views/rename_editor.h"

#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <QToolTip>

std::optional<QString> renameProblem(const QString& name)
{
    if (name.isEmpty())
        return QObject::tr("A name cannot be empty.");
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return QObject::tr("“%1” is not a name an item can have.").arg(name);
    if (name.contains('/'))
        return QObject::tr("A name cannot contain “/”.");
    if (name.contains(QChar(0)))
        return QObject::tr("A name cannot contain a NUL character.");
    if (QFile::encodeName(name).size() > 255)
        return QObject::tr("The name is too long.");
    return std::nullopt;
}

int renameSelectionLength(const QString& name, bool folder)
{
    if (folder)
        return int(name.size());
    const qsizetype dot = name.lastIndexOf('.');
    return dot <= 0 ? int(name.size()) : int(dot);
}

void renameFieldPrepare(QLineEdit& field, const QString& name, bool folder)
{
    field.setObjectName(QStringLiteral("renameEditor"));
    field.setText(name);
    const int length = renameSelectionLength(name, folder);
    field.setSelection(0, length);
    // A view selects the whole text once the editor is open: select the name again
    // right after.
    QTimer::singleShot(0, &field, [line = &field, length] { line->setSelection(0, length); });
}

bool renameFieldRefuses(QLineEdit& field)
{
    const std::optional<QString> problem = renameProblem(field.text());
    if (!problem)
        return false;
    field.setProperty("renameProblem", *problem);
    QToolTip::showText(field.mapToGlobal(QPoint(0, field.height())), *problem, &field);
    return true;
}

RenameEditor::RenameEditor(std::function<std::string(const QModelIndex&)> pathOf,
    std::function<bool(const QModelIndex&)> folderAt, Commit commit, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_pathOf(std::move(pathOf))
    , m_folderAt(std::move(folderAt))
    , m_commit(std::move(commit))
{
}

QWidget* RenameEditor::createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    return QStyledItemDelegate::createEditor(parent, option, index);
}

void RenameEditor::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* line = qobject_cast<QLineEdit*>(editor))
        renameFieldPrepare(*line, index.data(Qt::EditRole).toString(), m_folderAt(index));
}

void RenameEditor::setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex& index) const
{
    auto* line = qobject_cast<QLineEdit*>(editor);
    if (!line || line->text() == index.data(Qt::EditRole).toString())
        return; // unchanged: nothing to do
    if (renameProblem(line->text()))
        return; // the key filter kept a bad name from being committed; focus loss drops it
    if (m_commit)
        m_commit(m_pathOf(index), QFile::encodeName(line->text()).toStdString());
}

bool RenameEditor::eventFilter(QObject* object, QEvent* event)
{
    // Enter on a bad name: say why and keep editing.
    if (auto* line = qobject_cast<QLineEdit*>(object); line && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && renameFieldRefuses(*line))
            return true;
    }
    return QStyledItemDelegate::eventFilter(object, event);
}
