#include "actions/properties_window.h"

#include "fs/file_io.h"
#include "fs/fmt.h"
#include "services/browser_context.h"
#include "services/scan_service.h"
#include "sizes/folder_sizes.h"
#include "sizes/info_notifier.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QVBoxLayout>

#include <unistd.h>

#include <cstring>
#include <map>

namespace {

constexpr PermWho kWho[] = {PermWho::Owner, PermWho::Group, PermWho::Others};
constexpr PermBit kBits[] = {PermBit::Read, PermBit::Write, PermBit::Execute};

size_t boxIndex(PermWho who, PermBit bit)
{
    return size_t(who) * 3 + size_t(bit);
}

QString text(const std::string& bytes)
{
    return QFile::decodeName(QByteArray::fromStdString(bytes));
}

QString dateText(const std::optional<int64_t>& seconds)
{
    return seconds ? QString::fromStdString(dateFmt(*seconds)) : QObject::tr("Unknown");
}

// The open windows, one per path.
std::map<std::string, QPointer<PropertiesWindow>>& openWindows()
{
    static std::map<std::string, QPointer<PropertiesWindow>> windows;
    return windows;
}

} // namespace

PropertiesWindow::PropertiesWindow(std::string path, const BrowserContext& context, QObject* owner)
    : QWidget(qobject_cast<QWidget*>(owner), Qt::Window)
    , m_path(std::move(path))
    , m_context(context)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("properties"));
    if (owner && !qobject_cast<QWidget*>(owner))
        connect(owner, &QObject::destroyed, this, [this] { delete this; });
    setWindowTitle(tr("%1 Properties").arg(text(pathLastComponent(m_path))));

    auto* form = m_form = new QFormLayout;
    auto addField = [&](const char* key, const QString& label) {
        auto* value = new QLabel;
        value->setObjectName(QString::fromLatin1(key));
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setWordWrap(true);
        form->addRow(label, value);
        m_fields.emplace_back(key, value);
    };
    addField("name", tr("Name:"));
    addField("kind", tr("Kind:"));
    addField("size", tr("Size:"));
    addField("location", tr("Location:"));
    addField("link", tr("Link to:"));
    addField("created", tr("Created:"));
    addField("modified", tr("Modified:"));
    addField("accessed", tr("Accessed:"));
    addField("drive", tr("Drive:"));
    m_usage = new QProgressBar;
    m_usage->setTextVisible(false);
    form->addRow(QString(), m_usage);

    m_owner = new QLineEdit;
    m_owner->setObjectName(QStringLiteral("owner"));
    connect(m_owner, &QLineEdit::editingFinished, this, [this] {
        const std::string owner = QFile::encodeName(m_owner->text()).toStdString();
        if (m_loaded && !owner.empty() && owner != m_props.owner)
            change([path = m_path, owner] { return permApplyOwner(path, owner, {}); });
    });
    form->addRow(tr("Owner:"), m_owner);
    m_group = new QComboBox;
    m_group->setObjectName(QStringLiteral("group"));
    connect(m_group, &QComboBox::activated, this, [this](int index) {
        const std::string group = QFile::encodeName(m_group->itemText(index)).toStdString();
        if (m_loaded && group != m_props.group)
            change([path = m_path, group] { return permApplyOwner(path, {}, group); });
    });
    form->addRow(tr("Group:"), m_group);

    auto* grid = new QGridLayout;
    const QString whoNames[] = {tr("Owner"), tr("Group"), tr("Others")};
    const QString bitNames[] = {tr("Read"), tr("Write"), tr("Run / open")};
    for (PermWho who : kWho) {
        const int row = int(who);
        grid->addWidget(new QLabel(whoNames[row]), row, 0);
        for (PermBit bit : kBits) {
            auto* box = new QCheckBox(bitNames[int(bit)]);
            m_boxes[boxIndex(who, bit)] = box;
            grid->addWidget(box, row, 1 + int(bit));
            connect(box, &QCheckBox::clicked, this, [this, who, bit](bool on) {
                const unsigned mode = permWith(m_props.mode, who, bit, on);
                change([path = m_path, mode] { return permApplyMode(path, mode); });
            });
        }
        m_access[size_t(row)] = new QLabel;
        m_access[size_t(row)]->setForegroundRole(QPalette::PlaceholderText);
        grid->addWidget(m_access[size_t(row)], row, 4);
    }
    addField("mode", tr("Permissions:"));
    form->addRow(QString(), grid);

    m_error = new QLabel;
    m_error->setObjectName(QStringLiteral("error"));
    m_error->setWordWrap(true);
    m_error->setStyleSheet(QStringLiteral("color: #c62828"));
    m_error->hide();

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_error);
    layout->addStretch();

    // A folder's size arrives from the size walker; each announcement asks again.
    connect(&InfoNotifier::instance(), &InfoNotifier::brondelInfoChanged, this, &PropertiesWindow::showSize);
    reload();
}

QLabel* PropertiesWindow::field(const char* key) const
{
    for (const auto& [name, label] : m_fields)
        if (std::strcmp(name, key) == 0)
            return label;
    return nullptr;
}

QCheckBox* PropertiesWindow::permBox(PermWho who, PermBit bit) const
{
    return m_boxes[boxIndex(who, bit)];
}

void PropertiesWindow::reload()
{
    m_context.scans->submit(this, [this, path = m_path]() -> std::function<void()> {
        auto props = std::make_shared<FileProps>(FileProps::read(path));
        auto groups = std::make_shared<std::vector<std::string>>(permUserGroups());
        return [this, props, groups] {
            m_group->clear();
            for (const std::string& group : *groups)
                m_group->addItem(text(group));
            display(std::move(*props));
        };
    });
}

void PropertiesWindow::display(FileProps props)
{
    m_props = std::move(props);
    m_loaded = true;
    const FileProps& p = m_props;
    field("name")->setText(text(pathLastComponent(m_path)));
    field("kind")->setText(p.exists ? QString::fromStdString(p.info.kind) : tr("Missing"));
    field("location")->setText(text(pathParent(m_path)));
    field("link")->setText(text(p.linkTarget));
    field("created")->setText(dateText(p.info.created));
    field("modified")->setText(dateText(p.info.modified));
    field("accessed")->setText(dateText(p.accessed));
    const bool drive = p.drive && p.drive->totalBytes > 0;
    if (p.drive && !p.drive->responding)
        field("drive")->setText(QString::fromLatin1(kNotRespondingText));
    else if (drive)
        field("drive")->setText(tr("%1 used of %2, %3 free")
                                    .arg(QString::fromStdString(fmtHuman(p.drive->usedBytes())),
                                         QString::fromStdString(fmtHuman(p.drive->totalBytes)),
                                         QString::fromStdString(fmtHuman(p.drive->freeBytes))));
    if (!drive && !(p.drive && !p.drive->responding))
        field("drive")->clear();
    for (const char* key : {"link", "drive"})
        m_form->setRowVisible(field(key), !field(key)->text().isEmpty());
    m_form->setRowVisible(m_usage, drive);
    if (drive) {
        m_usage->setRange(0, 1000);
        m_usage->setValue(int(p.drive->usedBytes() * 1000 / p.drive->totalBytes));
    }

    const PermRights rights = permRights(::geteuid(), p.uid, p.isLink);
    m_owner->setText(text(p.owner));
    m_owner->setReadOnly(!rights.owner);
    if (m_group->findText(text(p.group)) < 0)
        m_group->insertItem(0, text(p.group));
    m_group->setCurrentText(text(p.group));
    m_group->setEnabled(rights.group);
    for (PermWho who : kWho) {
        for (PermBit bit : kBits) {
            QCheckBox* box = permBox(who, bit);
            box->setChecked(p.mode & permMask(who, bit));
            box->setEnabled(rights.mode && p.exists);
        }
        m_access[size_t(who)]->setText(QString::fromStdString(permAccessText(p.mode, who, p.isDir)));
    }
    field("mode")->setText(QStringLiteral("%1  (%2)")
                               .arg(QString::fromStdString(permSymbolic(p.mode)),
                                    QString::fromStdString(fileInfoOctal(p.mode))));
    showSize();
    emit loadedChanged();
}

void PropertiesWindow::showSize()
{
    if (!m_loaded)
        return;
    if (!m_props.isDir) {
        field("size")->setText(QString::fromStdString(fmtHuman(m_props.info.size)));
        return;
    }
    const auto size = FolderSizes::shared().size(m_path);
    field("size")->setText(size ? QString::fromStdString(fmtHuman(*size)) : tr("Calculating\u2026"));
}

void PropertiesWindow::change(std::function<int()> apply)
{
    m_context.editQueue().submit(this, [this, apply = std::move(apply)]() -> std::function<void()> {
        const int error = apply();
        return [this, error] {
            m_error->setVisible(error != 0);
            if (error != 0)
                m_error->setText(tr("Could not change this: %1").arg(QString::fromLocal8Bit(std::strerror(error))));
            reload(); // shows what really is, whichever way it went
        };
    });
}

void propertiesShow(const std::vector<std::string>& paths, const BrowserContext& context, QObject* owner)
{
    for (const std::string& path : paths) {
        QPointer<PropertiesWindow>& window = openWindows()[path];
        if (!window)
            window = new PropertiesWindow(path, context, owner);
        window->show();
        window->raise();
        window->activateWindow();
    }
}
