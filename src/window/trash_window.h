#pragma once
// The Trash as a place: every item of every trash folder of the user, with where it
// came from and when it was deleted. Restore puts items back (asking before it would
// replace anything), Delete Permanently and Empty Trash erase for good after the user
// confirms. Reads and erasing run on the window's own pool; Empty Trash shows its
// progress and can be stopped.

#include "fs/trash_list.h"
#include "services/background_work.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QLabel;

class QProgressBar;
class QPushButton;
class QTreeWidget;

class TrashWindow : public QWidget {
    Q_OBJECT
public:
    // The one Trash window, shown and raised (made on first use, calling `changed`
    // after each change it makes).
    static TrashWindow* showShared(std::function<void()> changed);

    // `topdirs`: the volume mount points whose trash folders count (by default, those
    // of the mount table, read in the background).
    explicit TrashWindow(std::function<std::vector<std::string>()> topdirs = {}, QWidget* parent = nullptr);
    ~TrashWindow() override;

    void reload();
    const std::vector<TrashItem>& items() const { return m_items; }
    bool isLoaded() const { return m_loaded; }
    bool isBusy() const { return m_busy; }
    QTreeWidget* list() const { return m_list; }
    // The question shown last (a confirmation or a conflict), while it is open.
    QMessageBox* question() const { return m_question; }

    // The actions on the selected rows (or all, for emptying); each asks first where
    // the buttons would.
    void restoreSelected();
    void deleteSelected();
    void emptyTrash();
    // Asks to empty the Trash once the list being read has landed.
    void emptyWhenLoaded();

signals:
    // After a change to the Trash: the windows refresh their sidebars and trash icons.
    void trashChanged();

private:
    std::vector<TrashItem> selectedItems() const;
    void fill();
    void ask(const QString& text, const QString& confirm, std::function<void()> then);
    void restoreNext(std::vector<TrashItem> queue);
    void eraseAll(std::vector<TrashItem> items);
    void setBusy(bool busy);
    void report(const QString& text);

    std::function<std::vector<std::string>()> m_topdirs;
    BackgroundWork m_work;
    int m_generation = 0;
    bool m_loaded = false;
    bool m_busy = false;
    bool m_emptyPending = false;
    std::vector<TrashItem> m_items;
    std::shared_ptr<std::atomic<bool>> m_stop;
    QTreeWidget* m_list = nullptr;
    QPushButton* m_restore = nullptr;
    QPushButton* m_delete = nullptr;
    QPushButton* m_empty = nullptr;
    QPushButton* m_stopButton = nullptr;
    QProgressBar* m_progress = nullptr;
    QLabel* m_status = nullptr;
    QPointer<QMessageBox> m_question;
};
