#pragma once
// The file operations under way, in a window's status bar: one bar for all jobs and a
// line about them, a button that opens the list of jobs (each with its bar, its line,
// Pause/Resume and Cancel). The questions a job asks (a name already taken, an item
// that failed) open as windows of their own and never block the event loop; the job
// waits for the answer. A long job that ends while no window of ours is in front is
// told to the desktop.

#include "ops/op_queue.h"

#include <QPointer>
#include <QWidget>

#include <vector>

class OpQueue;
class OpProgressModel;
class QAbstractButton;
class QLabel;
class QProgressBar;
class QToolButton;
class QVBoxLayout;

class OpProgressPanel : public QWidget {
    Q_OBJECT
public:
    OpProgressPanel(OpQueue* queue, QWidget* parent = nullptr);

    OpProgressModel* model() const { return m_model; }
    bool expanded() const { return m_expanded; }
    void setExpanded(bool expanded);

private:
    void rebuildList();
    void refreshRows(); // the texts and bars of the rows there are
    void updateSummary();
    void askConflict(OpJobId job, const OpConflict& conflict);
    void askError(OpJobId job, const OpError& error);

    QPointer<OpQueue> m_queue;
    OpProgressModel* m_model = nullptr;
    QProgressBar* m_bar = nullptr;
    QLabel* m_line = nullptr;
    QToolButton* m_expand = nullptr;
    QWidget* m_list = nullptr;
    QVBoxLayout* m_listLayout = nullptr;
    bool m_expanded = false;
    struct RowWidgets {
        QLabel* title;
        QProgressBar* bar;
        QLabel* line;
        QAbstractButton* pause;
    };
    std::vector<RowWidgets> m_rows;
};

// The text of a conflict question: "“report.pdf” already exists in “Documents”."
QString opConflictText(const OpConflict& conflict);
