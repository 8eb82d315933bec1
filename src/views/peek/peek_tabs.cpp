// Peek Tabs: every folder opened becomes a tab, and the tabs switch between them like a
// browser's. Opening a folder from an earlier tab replaces the tabs after it; closing a
// tab closes the ones after it too.

#include "views/peek/peek_style_view.h"

#include <QScrollArea>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

namespace {

class PeekTabs final : public PeekStyleView {
public:
    explicit PeekTabs(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        m_tabs = new QTabBar;
        m_tabs->setDocumentMode(true);
        m_tabs->setTabsClosable(true);
        m_tabs->setExpanding(false);
        m_tabs->setFocusPolicy(Qt::NoFocus);
        m_pages = new QStackedWidget;
        auto* box = new QVBoxLayout(this);
        box->setContentsMargins(0, 0, 0, 0);
        box->setSpacing(0);
        box->addWidget(m_tabs);
        box->addWidget(m_pages, 1);
        connect(m_tabs, &QTabBar::currentChanged, this, [this](int tab) {
            if (tab >= 0 && tab < m_pages->count())
                m_pages->setCurrentIndex(tab);
        });
        connect(m_tabs, &QTabBar::tabCloseRequested, this, [this](int tab) {
            if (tab > 0)
                climbTo(tab - 1);
        });
    }

    int focusLevel() const override
    {
        return m_tabs->currentIndex() < 0 ? levelCount() - 1 : std::min(m_tabs->currentIndex(), levelCount() - 1);
    }

protected:
    void showLevel(int index) override
    {
        PeekPlateGrid* plates = makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr);
        QWidget* page = scrollArea(Qt::Vertical, plates);
        m_pages->addWidget(page);
        const int tab = m_tabs->addTab(level(index).title);
        m_tabs->setTabToolTip(tab, QString::fromStdString(level(index).path));
        if (index == 0) // the folder the pane shows stays open
            m_tabs->setTabButton(0, QTabBar::RightSide, nullptr);
        m_tabs->setCurrentIndex(tab);
        fadeIn(plates, duration(200));
    }

    void dropLevels(int from) override
    {
        deleteGrids(from);
        while (m_pages->count() > from) {
            QWidget* page = m_pages->widget(m_pages->count() - 1);
            m_pages->removeWidget(page);
            page->deleteLater();
            m_tabs->removeTab(m_tabs->count() - 1);
        }
        m_tabs->setCurrentIndex(from - 1);
    }

private:
    QTabBar* m_tabs;
    QStackedWidget* m_pages;
};

} // namespace

PEEK_STYLE("peek-tabs", PeekTabs)
