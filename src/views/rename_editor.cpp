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
    QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* line = qobject_cast<QLineEdit*>(editor))
        line->setObjectName(QStringLiteral("renameEditor"));
    return editor;
}

void RenameEditor::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    auto* line = qobject_cast<QLineEdit*>(editor);
    if (!line)
        return;
    const QString name = index.data(Qt::EditRole).toString();
    line->setText(name);
    const int length = renameSelectionLength(name, m_folderAt(index));
    line->setSelection(0, length);
    // The view selects the whole text once the editor is open: select the name again
    // right after.
    QTimer::singleShot(0, line, [line, length] { line->setSelection(0, length); });
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
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (const std::optional<QString> problem = renameProblem(line->text())) {
                line->setProperty("renameProblem", *problem);
                QToolTip::showText(line->mapToGlobal(QPoint(0, line->height())), *problem, line);
                return true;
            }
        }
    }
    return QStyledItemDelegate::eventFilter(object, event);
}
