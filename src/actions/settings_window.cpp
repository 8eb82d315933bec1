#include "actions/action_dialogs.h"
#include "actions/settings_window.h"

#include "actions/settings_actions.h"
#include "config/config_paths.h"
#include "config/settings_file.h"
#include "sizes/info_module.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

constexpr int kRecentMax = 50;

// The sort keys in the order the menu offers them.
const char* const kSortKeys[] = {"name", "date", "size", "kind"};

} // namespace

SettingsWindow::SettingsWindow(const BrowserContext& context, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , m_context(context)
{
    setWindowTitle(tr("Settings"));
    setObjectName(QStringLiteral("settingsWindow"));
    auto* layout = new QVBoxLayout(this);

    auto* browsing = new QGroupBox(tr("Browsing"), this);
    auto* browsingForm = new QFormLayout(browsing);
    m_hidden = addCheck(tr("Show hidden files"));
    browsingForm->addRow(m_hidden);
    m_sort = new QComboBox(browsing);
    m_sort->setAccessibleName(tr("Sort by"));
    m_sort->addItems({tr("Name"), tr("Date Modified"), tr("Size"), tr("Kind")});
    browsingForm->addRow(tr("Sort by:"), m_sort);
    m_ascending = addCheck(tr("Ascending"));
    browsingForm->addRow(m_ascending);
    m_foldersFirst = addCheck(tr("Folders first"));
    browsingForm->addRow(m_foldersFirst);
    layout->addWidget(browsing);

    auto* recent = new QGroupBox(tr("Recent folders"), this);
    auto* recentForm = new QFormLayout(recent);
    m_showRecent = addCheck(tr("Show recent folders"));
    recentForm->addRow(m_showRecent);
    m_recentCount = new QSpinBox(recent);
    m_recentCount->setRange(0, kRecentMax);
    m_recentCount->setAccessibleName(tr("Recent folders kept"));
    recentForm->addRow(tr("Folders kept:"), m_recentCount);
    layout->addWidget(recent);

    auto* cards = new QGroupBox(tr("Card sections"), this);
    auto* cardsForm = new QFormLayout(cards);
    const std::pair<const char*, std::string BrondelSettings::*> titles[] = {{"drives", &BrondelSettings::drivesTitle},
        {"items", &BrondelSettings::itemsTitle}, {"favorites", &BrondelSettings::favoritesTitle},
        {"recent", &BrondelSettings::recentTitle}};
    const QString labels[] = {tr("Drives title:"), tr("Folder items title ({folder} is the folder's name):"),
        tr("Favorites title:"), tr("Recent title:")};
    for (size_t i = 0; i < std::size(titles); ++i) {
        auto* edit = new QLineEdit(cards);
        edit->setAccessibleName(labels[i]);
        cardsForm->addRow(labels[i], edit);
        m_titles.push_back({titles[i].first, titles[i].second, edit});
    }
    m_downloads = addCheck(tr("Show the Downloads card"));
    cardsForm->addRow(m_downloads);
    layout->addWidget(cards);

    auto* infos = new QGroupBox(tr("Info modules"), this);
    auto* infosLayout = new QVBoxLayout(infos);
    for (const auto& module : InfoModules::all()) {
        QCheckBox* box = addCheck(QString::fromStdString(module->title()));
        infosLayout->addWidget(box);
        m_infos.push_back({module->key(), box});
    }
    layout->addWidget(infos);

    m_error = dialogFooterAdd(*this, *layout);

    sync();

    const BrowserContext* where = &m_context;
    auto toggle = [this, where](QCheckBox* box, bool BrondelSettings::*member) {
        connect(box, &QCheckBox::toggled, this,
            [where, member](bool on) { SettingsActions::change(*where, [&](BrondelSettings& s) { s.*member = on; }); });
    };
    toggle(m_hidden, &BrondelSettings::showHidden);
    toggle(m_ascending, &BrondelSettings::ascending);
    toggle(m_foldersFirst, &BrondelSettings::foldersFirst);
    toggle(m_showRecent, &BrondelSettings::showRecent);
    toggle(m_downloads, &BrondelSettings::showDownloads);
    connect(m_sort, &QComboBox::currentIndexChanged, this, [where](int index) {
        if (index >= 0 && index < int(std::size(kSortKeys)))
            SettingsActions::setSort(*where, kSortKeys[index]);
    });
    connect(m_recentCount, &QSpinBox::valueChanged, this, [where](int count) {
        SettingsActions::change(*where, [count](BrondelSettings& s) { s.recentCount = count; });
    });
    for (const TitleField& field : m_titles)
        connect(field.edit, &QLineEdit::editingFinished, this, [this, field] { titleEdited(field); });
    for (const InfoField& field : m_infos)
        connect(field.box, &QCheckBox::toggled, this, [where, key = field.key](bool on) {
            SettingsActions::change(*where, [&](BrondelSettings& s) { s.infoOn[key] = on; });
        });
}

QCheckBox* SettingsWindow::addCheck(const QString& text)
{
    auto* box = new QCheckBox(text, this);
    box->setAccessibleName(text);
    return box;
}

void SettingsWindow::sync()
{
    const BrondelSettings& s = Settings::current();
    auto set = [](QCheckBox* box, bool on) {
        QSignalBlocker quiet(box);
        box->setChecked(on);
    };
    set(m_hidden, s.showHidden);
    set(m_ascending, s.ascending);
    set(m_foldersFirst, s.foldersFirst);
    set(m_showRecent, s.showRecent);
    set(m_downloads, s.showDownloads);
    {
        QSignalBlocker quiet(m_sort);
        const auto* key = std::find(std::begin(kSortKeys), std::end(kSortKeys), s.sortBy);
        m_sort->setCurrentIndex(int(key - std::begin(kSortKeys)) % int(std::size(kSortKeys)));
    }
    {
        QSignalBlocker quiet(m_recentCount);
        m_recentCount->setValue(int(s.recentCount));
    }
    for (const TitleField& field : m_titles)
        if (!field.edit->hasFocus()) // never under the user's fingers
            field.edit->setText(QString::fromStdString(s.*field.member));
    for (const InfoField& field : m_infos)
        set(field.box, SettingsActions::infoIsOn(s, field.key));
}

void SettingsWindow::changeEvent(QEvent* event)
{
    // The menus may have changed a setting while this window was in the background.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        sync();
    QDialog::changeEvent(event);
}

void SettingsWindow::titleEdited(const TitleField& field)
{
    const std::string text = field.edit->text().trimmed().toStdString();
    const std::string current = Settings::current().*field.member;
    m_error->hide();
    if (text == current)
        return;
    // The file keeps a title between double quotes on one line, and an empty title
    // reads back as the default: neither could be saved as typed.
    const std::optional<std::string> unstorable = configUnstorable(text);
    if (text.empty() || unstorable) {
        m_error->setText(text.empty() ? tr("A title cannot be empty.")
                                      : tr("This title cannot be saved: it holds %1.")
                                            .arg(QString::fromStdString(*unstorable)));
        m_error->show();
        field.edit->setText(QString::fromStdString(current));
        return;
    }
    SettingsActions::change(m_context, [&](BrondelSettings& s) { s.*field.member = text; });
}

QLineEdit* SettingsWindow::titleEdit(const std::string& key) const
{
    for (const TitleField& field : m_titles)
        if (field.key == key)
            return field.edit;
    return nullptr;
}

QCheckBox* SettingsWindow::infoBox(const std::string& key) const
{
    for (const InfoField& field : m_infos)
        if (field.key == key)
            return field.box;
    return nullptr;
}

QString SettingsWindow::errorText() const
{
    return m_error->isHidden() ? QString() : m_error->text();
}
