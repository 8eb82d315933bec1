#include "window/pane_view.h"

#include "window/brondel_window.h"
#include "window/pane_header.h"

#include <QVBoxLayout>

PaneView::PaneView(BrondelWindow* host, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
    , m_header(new PaneHeader(this))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_header);
    host->setParent(this);
    column->addWidget(host, 1);
    m_header->setLabel(host->title());
    m_header->setMode(host->currentMode());
    connect(host, &BrondelWindow::titleChanged, m_header, &PaneHeader::setLabel);
    connect(host, &BrondelWindow::modeChanged, m_header, &PaneHeader::setMode);
}
