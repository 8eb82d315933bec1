#include "actions/action_dialogs.h"

#include <QPushButton>

#include <QAbstractItemView>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QVBoxLayout>

namespace {

void alertModal(QWidget* parent, const QString& text, const QString& detail)
{
    QMessageBox box(QMessageBox::Warning, QObject::tr("Brondel"), text, QMessageBox::Ok, parent);
    box.setInformativeText(detail);
    box.exec();
}

std::optional<QString> promptModal(QWidget* parent, const QString& title, const QString& message,
    const QString& value)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(title);
    auto* layout = new QVBoxLayout(&dialog);
    auto* heading = new QLabel(title, &dialog);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    layout->addWidget(heading);
    layout->addWidget(new QLabel(message, &dialog));
    auto* field = new QLineEdit(value, &dialog);
    field->setFixedSize(260, 24);
    layout->addWidget(field);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    field->setFocus();
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    QString answer = field->text().trimmed();
    if (answer.isEmpty())
        return std::nullopt;
    return answer;
}

QStringList chooseFoldersModal(QWidget* parent, const QString& accept)
{
    // The platform's folder chooser takes one folder at a time; Qt's own lets its lists
    // select several.
    QFileDialog dialog(parent);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly, true);
    dialog.setOption(QFileDialog::DontUseNativeDialog, true);
    dialog.setLabelText(QFileDialog::Accept, accept);
    for (const char* name : {"listView", "treeView"})
        if (auto* view = dialog.findChild<QAbstractItemView*>(QString::fromLatin1(name)))
            view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedFiles();
}

} // namespace

ActionDialogs& ActionDialogs::current()
{
    static ActionDialogs dialogs{alertModal, promptModal, chooseFoldersModal};
    return dialogs;
}

std::optional<QString> ctxPrompt(QWidget* parent, const QString& title, const QString& message, const QString& value)
{
    return ActionDialogs::current().prompt(parent, title, message, value);
}

QLabel* dialogFooterAdd(QDialog& dialog, QVBoxLayout& layout)
{
    auto* error = new QLabel(&dialog);
    error->setStyleSheet(QStringLiteral("color: #c01c28;"));
    error->setWordWrap(true);
    error->hide();
    layout.addWidget(error);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    buttons->button(QDialogButtonBox::Close)->setAccessibleName(QDialog::tr("Close"));
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::close);
    layout.addWidget(buttons);
    return error;
}
