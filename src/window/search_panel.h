#pragma once
// The search of a browser window (Ctrl+F): a field and, below the panes, the entries
// whose names hold the typed text anywhere below the active pane's folder, each with
// its folder. The walk runs in the background (nameSearchRun); what it finds is shown
// while it goes on, gathered and added at most every 100 ms, so a walk that finds a
// hundred thousand entries costs the UI a few dozen updates. Escape, a new query or
// leaving the folder stop the walk at its next folder. Enter or a double-click on a
// result opens a folder, or shows a file selected in its folder.

#include "fs/name_search.h"
#include "services/browser_context.h"
#include "services/scan_service.h"

#include <QAbstractTableModel>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <string>
#include <vector>

class QLabel;
class QLineEdit;
class QTreeView;

// The found entries: name and folder columns over one vector (no object per row).
class SearchResults : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Name, Folder, ColumnCount };
    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void clear();
    void append(std::vector<NameSearchHit> hits); // one insertion for the whole batch
    const NameSearchHit& hit(int row) const { return m_hits.at(size_t(row)); }

private:
    std::vector<NameSearchHit> m_hits;
};

class SearchPanel : public QWidget {
    Q_OBJECT
public:
    // Results are gathered at most this often.
    static constexpr int kBatchMs = 100;

    explicit SearchPanel(const BrowserContext& context, QWidget* parent = nullptr);
    ~SearchPanel() override;

    // Shows the panel for the folder `root` and puts the keyboard focus in the field.
    void open(const std::string& root);
    // The folder searched below; a different one stops the running walk (the results
    // that came are kept, marked as stopped).
    void setRoot(const std::string& root);
    // Stops the running walk, if any.
    void cancel();
    // Runs the field's query now, without waiting for the typing to pause.
    void runNow();

    bool isRunning() const { return m_run != nullptr; }
    QLineEdit* field() const { return m_field; }
    QTreeView* resultsView() const { return m_view; }
    const SearchResults& results() const { return m_results; }
    QString statusText() const;
    // How many batches reached the list during the last walk.
    int batches() const { return m_batches; }
    // Waits until no walk runs in the background, a stopped one included (tests).
    void waitForIdle() { m_pool.waitForDone(); }

signals:
    // A result activated: `folder` to show, `select` the entry to select in it ("" none).
    void revealRequested(const std::string& folder, const std::string& select);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Run;
    void start();
    void drain();
    void finished(const std::shared_ptr<Run>& run, size_t matches);
    void activate(const QModelIndex& index);

    const BrowserContext& m_context;
    ScanService m_pool{2}; // a walk stuck on a dead drive leaves the other thread free
    QLineEdit* m_field = nullptr;
    QTreeView* m_view = nullptr;
    QLabel* m_status = nullptr;
    SearchResults m_results;
    QTimer m_typing; // the query runs once typing pauses
    QTimer m_drainer;
    std::string m_root;
    std::shared_ptr<Run> m_run; // the walk under way
    int m_batches = 0;
};
