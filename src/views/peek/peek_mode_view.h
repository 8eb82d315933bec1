#pragma once
// Peek mode: a bar of the Peek styles above the folder drawn in the chosen one. The
// bar follows the user's order of the styles and selects the remembered style; a new
// choice is remembered at once. "Rearrange" turns the bar into one whose segments are
// dragged into a new order: "Done" saves it (and the menus follow), "Cancel" leaves
// everything as it was. The order file and the remembered style are read and written
// on the edit queue, never on the UI thread.

#include "config/lab_variant.h"
#include "views/peek/peek_style_view.h"

#include <QWidget>

#include <optional>
#include <string>
#include <vector>

class QPushButton;
class QScrollArea;
class QTabBar;
class QVBoxLayout;

class PeekModeView : public QWidget {
    Q_OBJECT
public:
    PeekModeView(PeekSetup setup, QWidget* parent = nullptr);

    // The styles in the bar's order, and the one shown (null until the order is read).
    const std::vector<const LabVariant*>& types() const { return m_types; }
    const LabVariant* currentStyle() const { return m_current; }
    PeekStyleView* styleView() const { return m_style; }
    QTabBar* bar() const { return m_bar; }
    QTabBar* reorderBar() const { return m_reorder; }
    bool rearranging() const { return m_reorder != nullptr; }

    void rebuildBar();
    void styleChanged(int index);
    void rearrangeEnter();
    void rearrangeDone();
    void rearrangeCancel();
    void render();

signals:
    void styleShown(); // a style view was put in place (its root may still be loading)
    void orderSaved(); // "Done" wrote the order file

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void typesArrived(std::vector<const LabVariant*> types, std::optional<std::string> remembered);
    void showButtons(bool rearranging);

    PeekSetup m_setup;
    std::vector<const LabVariant*> m_types;
    const LabVariant* m_current = nullptr;
    QTabBar* m_bar = nullptr;
    QTabBar* m_reorder = nullptr;
    QScrollArea* m_barScroll = nullptr;
    QWidget* m_content = nullptr;
    QVBoxLayout* m_contentLayout = nullptr;
    PeekStyleView* m_style = nullptr;
    QPushButton* m_rearrangeBtn = nullptr;
    QPushButton* m_doneBtn = nullptr;
    QPushButton* m_cancelBtn = nullptr;
    QString m_folderName;
    int m_renderedWidth = -1;
};
