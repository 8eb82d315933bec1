#pragma once
// Renaming a row in place (F2, or a slow second click on a selected row): the editor
// opens with the name selected up to its extension, refuses an empty name, "." and "..",
// and a name holding "/" (it says why under the field and stays open), and hands a good
// name to the pane. The rename itself runs as a file operation, so it can be undone.

#include <QStyledItemDelegate>

#include <functional>
#include <optional>
#include <string>

// Why `name` cannot be a file name, or nothing when it can.
std::optional<QString> renameProblem(const QString& name);

// How much of `name` the editor selects at first: the part before the extension of a
// file ("report" of "report.tar.gz" is not attempted: the last dot counts), all of a
// folder's name or of a name whose only dot leads it (".bashrc").
int renameSelectionLength(const QString& name, bool folder);

class QLineEdit;

// The field of an in-place rename, whichever view opens it: named "renameEditor", it
// holds `name` with the part before the extension selected.
void renameFieldPrepare(QLineEdit& field, const QString& name, bool folder);
// Return or Enter pressed in the field: true (and why, under the field) when its name
// cannot be taken, so that the field stays open.
bool renameFieldRefuses(QLineEdit& field);

class RenameEditor : public QStyledItemDelegate {
    Q_OBJECT
public:
    // `commit(path, newName)` receives each accepted new name (bytes of the name as typed).
    using Commit = std::function<void(const std::string& path, const std::string& newName)>;
    // `pathOf` and `folderAt` describe the row being edited.
    RenameEditor(std::function<std::string(const QModelIndex&)> pathOf, std::function<bool(const QModelIndex&)> folderAt,
        Commit commit, QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    std::function<std::string(const QModelIndex&)> m_pathOf;
    std::function<bool(const QModelIndex&)> m_folderAt;
    Commit m_commit;
};
