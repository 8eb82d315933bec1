#pragma once
// The Properties window of one item: name, kind, size (a folder's from the size walker,
// shown when its walk ends), location, dates, owner, group and permissions, and a
// drive's usage. Everything is read off the UI thread; permission and ownership changes
// are made there too, where the user may make them, and a refusal is shown in the
// window.

#include "fs/file_props.h"

#include <QWidget>

#include <array>
#include <functional>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QProgressBar;
struct BrowserContext;

class PropertiesWindow : public QWidget {
    Q_OBJECT
public:
    // `owner` bounds the window's life: a widget becomes its parent (the window closes
    // with it), any other object deletes it when it goes.
    PropertiesWindow(std::string path, const BrowserContext& context, QObject* owner);

    // Reads the item again in the background.
    void reload();

    const std::string& path() const { return m_path; }
    // The facts last read (all defaults until the first read arrives).
    const FileProps& props() const { return m_props; }
    bool loaded() const { return m_loaded; }
    QLabel* field(const char* key) const; // "name", "kind", "size", "location", "owner", ...
    QCheckBox* permBox(PermWho who, PermBit bit) const;
    QComboBox* groupBox() const { return m_group; }
    QLineEdit* ownerField() const { return m_owner; }
    QLabel* errorLabel() const { return m_error; }

signals:
    void loadedChanged();

private:
    void display(FileProps props);
    void showSize();
    // Runs a change off the UI thread, then shows its error (if any) and reads again.
    void change(std::function<int()> apply);

    std::string m_path;
    const BrowserContext& m_context;
    FileProps m_props;
    bool m_loaded = false;
    QFormLayout* m_form = nullptr;
    std::vector<std::pair<const char*, QLabel*>> m_fields;
    std::array<QCheckBox*, 9> m_boxes{};
    std::array<QLabel*, 3> m_access{};
    QLineEdit* m_owner = nullptr;
    QComboBox* m_group = nullptr;
    QProgressBar* m_usage = nullptr;
    QLabel* m_error = nullptr;
};

// Opens the Properties window of each path, or brings forward the one already open.
void propertiesShow(const std::vector<std::string>& paths, const BrowserContext& context, QObject* owner);
