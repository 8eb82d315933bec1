#include "window/path_entry.h"

#include "fs/node_store.h"

#include "fs/paths.h"
#include "services/core_bridge.h"
#include "services/scan_service.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QAbstractButton>
#include <QCompleter>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStringListModel>
#include <QVBoxLayout>

namespace {

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

} // namespace

std::string pathEntryResolve(const QString& typed, const std::string& base, const std::string& home)
{
    QString text = typed.trimmed();
    std::string path;
    if (text == QLatin1String("~"))
        path = home;
    else if (text.startsWith(QLatin1String("~/")))
        path = home + QFile::encodeName(text.mid(1)).toStdString();
    else if (text.startsWith(QLatin1Char('/')))
        path = QFile::encodeName(text).toStdString();
    else
        path = (base == "/" ? home : base) + "/" + QFile::encodeName(text).toStdString();
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

QString pathEntryFolderPart(const QString& typed)
{
    const qsizetype slash = typed.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? QString() : typed.left(slash + 1);
}

void fieldNameClearButton(QLineEdit& field, const QString& description)
{
    for (QAbstractButton* button : field.findChildren<QAbstractButton*>()) {
        button->setAccessibleName(QObject::tr("Clear"));
        button->setAccessibleDescription(description);
    }
}

PathEntry::PathEntry(const BrowserContext& context, QWidget* parent)
    : QFrame(parent)
    , m_context(context)
{
    setObjectName(QStringLiteral("pathEntry"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(1);
    m_edit = new QLineEdit(this);
    m_edit->setAccessibleName(tr("Location"));
    m_edit->setPlaceholderText(tr("Type a folder, e.g. ~/Documents"));
    m_edit->setClearButtonEnabled(true);
    fieldNameClearButton(*m_edit, tr("Clears the location"));
    layout->addWidget(m_edit);
    m_error = new QLabel(this);
    m_error->setAccessibleName(tr("Location error"));
    m_error->setStyleSheet(QStringLiteral("color: #c01c28;"));
    m_error->hide();
    layout->addWidget(m_error);

    m_names = new QStringListModel(this);
    m_completer = new QCompleter(m_names, this);
    m_completer->setCaseSensitivity(Qt::CaseInsensitive);
    m_completer->setCompletionMode(QCompleter::PopupCompletion);
    m_edit->setCompleter(m_completer);
    m_edit->installEventFilter(this);
    connect(m_edit, &QLineEdit::textEdited, this, &PathEntry::edited);
    connect(m_edit, &QLineEdit::returnPressed, this, &PathEntry::submit);
    // A click elsewhere in the window closes the field, as Escape does, leaving the
    // focus where the click put it.
    m_focusLink = connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        QWidget* popup = m_completer->popup();
        if (isVisible() && now && now != this && !isAncestorOf(now) && now != popup && !popup->isAncestorOf(now))
            dismiss(Focus::Stay);
    });
    hide();
}

PathEntry::~PathEntry()
{
    // The field's own destruction moves the focus, which would call the handler above
    // on an object that is no longer a PathEntry.
    disconnect(m_focusLink);
}

void PathEntry::open(const std::string& location, const QRect& where)
{
    m_base = location;
    const std::string home = homeDir();
    QString text;
    if (location == home)
        text = QStringLiteral("~/");
    else if (location.starts_with(home + "/"))
        text = QStringLiteral("~") + decode(location.substr(home.size())) + QLatin1Char('/');
    else if (location != "/")
        text = decode(location) + QLatin1Char('/');
    else
        text = QStringLiteral("/");
    m_error->hide();
    m_edit->setText(text);
    setGeometry(where.x(), where.y(), where.width(), sizeHint().height());
    show();
    raise();
    m_edit->setFocus(Qt::ShortcutFocusReason);
    m_edit->selectAll();
    edited(text);
}

void PathEntry::close()
{
    dismiss(Focus::BackToWindow);
}

void PathEntry::dismiss(Focus focus)
{
    ++m_checkGeneration; // a check on its way no longer navigates
    m_listed.clear();
    m_completer->popup()->hide();
    hide();
    if (focus == Focus::BackToWindow && parentWidget())
        parentWidget()->setFocus(Qt::OtherFocusReason);
}

QString PathEntry::errorText() const
{
    return m_error->isHidden() ? QString() : m_error->text();
}

QStringList PathEntry::candidates() const
{
    return m_names->stringList();
}

void PathEntry::showError(const QString& text)
{
    m_error->setText(text);
    m_error->setHidden(text.isEmpty());
    resize(width(), sizeHint().height());
}

bool PathEntry::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_edit && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && !m_completer->popup()->isVisible()) {
        close();
        return true;
    }
    return QFrame::eventFilter(watched, event);
}

void PathEntry::edited(const QString& text)
{
    showError({});
    const QString folderPart = pathEntryFolderPart(text);
    if (folderPart.isEmpty())
        return;
    const std::string folder = pathEntryResolve(folderPart, m_base, homeDir());
    // Hidden folders are offered once their leading dot is typed.
    const bool hidden = text.mid(folderPart.size()).startsWith(QLatin1Char('.'));
    if (folder == m_listed && hidden == m_listedHidden)
        return;
    m_listed = folder;
    m_listedHidden = hidden;
    m_names->setStringList({});
    const int64_t gen = ++m_listGeneration;
    BrondelSettings settings = *m_context.settings;
    settings.showHidden = hidden;
    m_context.scans->scan(folder, settings, this, [this, gen, folderPart](DirNodePtr root) {
        if (gen != m_listGeneration || !root)
            return; // the user has typed on into another folder
        QStringList names;
        dirNodeForEachEntry(*root, [&](std::string_view name, bool isDir) {
            if (isDir)
                names << folderPart + QFile::decodeName(QByteArray(name.data(), qsizetype(name.size())))
                        + QLatin1Char('/');
        });
        m_names->setStringList(names);
        if (m_edit->hasFocus() && m_edit->text().size() > folderPart.size())
            m_completer->complete();
    });
}

void PathEntry::submit()
{
    const QString typed = m_edit->text();
    if (typed.trimmed().isEmpty())
        return;
    const std::string path = pathEntryResolve(typed, m_base, homeDir());
    const int64_t gen = ++m_checkGeneration;
    m_context.scans->submit(this, [this, gen, path]() -> std::function<void()> {
        const BridgeEntry entry = bridgeEntryAt(path);
        return [this, gen, path, entry] {
            if (gen != m_checkGeneration)
                return;
            switch (entry) {
            case BridgeEntry::Folder:
                close();
                emit navigateRequested(path);
                return;
            case BridgeEntry::NotFolder:
                showError(tr("\u201c%1\u201d is not a folder.").arg(decode(path)));
                return;
            case BridgeEntry::Missing:
                showError(tr("There is no folder \u201c%1\u201d.").arg(decode(path)));
                return;
            case BridgeEntry::NotResponding:
                showError(tr("The drive of \u201c%1\u201d is not responding.").arg(decode(path)));
                return;
            }
        };
    });
}
