#pragma once
// The Settings window: every global preference in one place. Each change applies to the
// process's settings and every window at once and is written to the settings file the
// way the menus write theirs: the file is read afresh and only the changed key is
// replaced, so hand edits and `brondel infos` survive.

#include <QDialog>

#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;
struct BrondelSettings;
struct BrowserContext;

class SettingsWindow : public QDialog {
    Q_OBJECT
public:
    explicit SettingsWindow(const BrowserContext& context, QWidget* parent = nullptr);

    // Shows the settings as they stand now.
    void sync();

    QCheckBox* hiddenBox() const { return m_hidden; }
    QComboBox* sortBox() const { return m_sort; }
    QSpinBox* recentCountBox() const { return m_recentCount; }
    QLineEdit* titleEdit(const std::string& key) const;
    QCheckBox* infoBox(const std::string& key) const;
    QString errorText() const;

protected:
    void changeEvent(QEvent* event) override;

private:
    struct TitleField {
        std::string key; // "drives", "items", "favorites", "recent"
        std::string BrondelSettings::*member;
        QLineEdit* edit;
    };
    struct InfoField {
        std::string key;
        QCheckBox* box;
    };

    QCheckBox* addCheck(const QString& text);
    void titleEdited(const TitleField& field);

    const BrowserContext& m_context;
    QCheckBox* m_hidden = nullptr;
    QComboBox* m_sort = nullptr;
    QCheckBox* m_ascending = nullptr;
    QCheckBox* m_foldersFirst = nullptr;
    QCheckBox* m_showRecent = nullptr;
    QSpinBox* m_recentCount = nullptr;
    QCheckBox* m_downloads = nullptr;
    QLabel* m_error = nullptr;
    std::vector<TitleField> m_titles;
    std::vector<InfoField> m_infos;
};
