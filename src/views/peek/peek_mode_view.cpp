#include "views/peek/peek_mode_view.h"

#include "config/peek_order.h"
#include "services/scan_service.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>

namespace {

QTabBar* segments(const std::vector<const LabVariant*>& types, const char* objectName)
{
    auto* bar = new QTabBar;
    bar->setObjectName(QLatin1String(objectName));
    bar->setDocumentMode(true);
    bar->setDrawBase(false);
    bar->setExpanding(false);
    bar->setUsesScrollButtons(false);
    bar->setFocusPolicy(Qt::NoFocus);
    QFont small = bar->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    bar->setFont(small);
    for (const LabVariant* type : types) {
        const int index = bar->addTab(QString::fromStdString(type->title()));
        bar->setTabToolTip(index, QString::fromStdString(type->blurb()));
        bar->setTabData(index, QString::fromStdString(type->title()));
    }
    return bar;
}

} // namespace

PeekModeView::PeekModeView(PeekSetup setup, QWidget* parent)
    : QWidget(parent)
    , m_setup(std::move(setup))
{
    setObjectName(QStringLiteral("peekMode"));
    const size_t slash = m_setup.rootPath.find_last_of('/');
    m_folderName = QString::fromStdString(slash == std::string::npos ? m_setup.rootPath
                                                                     : m_setup.rootPath.substr(slash + 1));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    auto* top = new QHBoxLayout;
    top->setContentsMargins(6, 4, 6, 4);
    m_barScroll = new QScrollArea;
    m_barScroll->setObjectName(QStringLiteral("peekBarScroll"));
    m_barScroll->setFrameShape(QFrame::NoFrame);
    m_barScroll->setWidgetResizable(true);
    m_barScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_barScroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_barScroll->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    top->addWidget(m_barScroll, 1);
    m_rearrangeBtn = new QPushButton(tr("Rearrange"));
    m_doneBtn = new QPushButton(tr("Done"));
    m_cancelBtn = new QPushButton(tr("Cancel"));
    for (QPushButton* button : {m_rearrangeBtn, m_doneBtn, m_cancelBtn}) {
        button->setFocusPolicy(Qt::NoFocus);
        top->addWidget(button);
    }
    m_rearrangeBtn->setObjectName(QStringLiteral("peekRearrange"));
    m_doneBtn->setObjectName(QStringLiteral("peekDone"));
    m_cancelBtn->setObjectName(QStringLiteral("peekCancel"));
    connect(m_rearrangeBtn, &QPushButton::clicked, this, &PeekModeView::rearrangeEnter);
    connect(m_doneBtn, &QPushButton::clicked, this, &PeekModeView::rearrangeDone);
    connect(m_cancelBtn, &QPushButton::clicked, this, &PeekModeView::rearrangeCancel);
    m_rearrangeBtn->setEnabled(false); // until the order is known
    showButtons(false);
    column->addLayout(top);

    m_content = new QWidget;
    m_content->setObjectName(QStringLiteral("peekContent"));
    m_contentLayout = new QVBoxLayout(m_content);
    m_contentLayout->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_content, 1);

    m_setup.context.editQueue().submit(this, [this]() -> std::function<void()> {
        std::vector<const LabVariant*> types = peekOrderedTypes();
        std::optional<std::string> remembered = peekStyleCurrent();
        return [this, types, remembered] { typesArrived(types, remembered); };
    });
}

void PeekModeView::typesArrived(std::vector<const LabVariant*> types, std::optional<std::string> remembered)
{
    m_types = std::move(types);
    m_current = m_types.empty() ? nullptr : m_types.front();
    for (const LabVariant* type : m_types)
        if (remembered && type->title() == *remembered) {
            m_current = type;
            break;
        }
    m_rearrangeBtn->setEnabled(true);
    rebuildBar();
    render();
}

void PeekModeView::showButtons(bool rearranging)
{
    m_rearrangeBtn->setVisible(!rearranging);
    m_doneBtn->setVisible(rearranging);
    m_cancelBtn->setVisible(rearranging);
}

void PeekModeView::rebuildBar()
{
    QTabBar* bar = segments(m_types, "peekStyleBar");
    for (size_t i = 0; i < m_types.size(); ++i)
        if (m_types[i] == m_current)
            bar->setCurrentIndex(int(i));
    connect(bar, &QTabBar::currentChanged, this, &PeekModeView::styleChanged);
    if (m_barScroll->widget())
        m_barScroll->takeWidget()->deleteLater();
    m_bar = bar;
    m_barScroll->setWidget(bar);
    // Room for the segments and, on a narrow pane, the scroll bar under them.
    m_barScroll->setFixedHeight(bar->sizeHint().height() + m_barScroll->horizontalScrollBar()->sizeHint().height());
}

void PeekModeView::styleChanged(int index)
{
    if (index < 0 || size_t(index) >= m_types.size() || m_types[size_t(index)] == m_current)
        return;
    m_current = m_types[size_t(index)];
    m_setup.context.editQueue().submit(this, [title = m_current->title()]() -> std::function<void()> {
        peekStyleSetCurrent(title);
        return {};
    });
    render();
}

void PeekModeView::render()
{
    const bool hadFocus = m_style && m_style->hasFocus();
    if (m_style) {
        m_contentLayout->removeWidget(m_style);
        m_style->hide();
        m_style->deleteLater();
        m_style = nullptr;
    }
    if (!m_current)
        return;
    m_style = peekStyleMake(m_current->key(), m_setup);
    if (!m_style) // a style the GUI cannot draw yet: the first one it can
        for (const LabVariant* type : m_types)
            if ((m_style = peekStyleMake(type->key(), m_setup)))
                break;
    if (!m_style)
        return;
    m_style->setObjectName(QString::fromStdString(m_current->key()));
    m_contentLayout->addWidget(m_style);
    m_renderedWidth = width();
    m_style->start();
    setFocusProxy(m_style);
    if (hadFocus || hasFocus())
        m_style->setFocus(Qt::OtherFocusReason);
    emit styleShown();
}

void PeekModeView::rearrangeEnter()
{
    if (m_reorder || m_types.empty())
        return;
    m_reorder = segments(m_types, "peekReorderBar");
    m_reorder->setMovable(true);
    m_reorder->setCurrentIndex(-1);
    if (m_barScroll->widget())
        m_barScroll->takeWidget()->deleteLater();
    m_bar = nullptr;
    m_barScroll->setWidget(m_reorder);
    showButtons(true);
}

void PeekModeView::rearrangeDone()
{
    if (!m_reorder)
        return;
    std::vector<std::string> names;
    for (int i = 0; i < m_reorder->count(); ++i)
        names.push_back(m_reorder->tabData(i).toString().toStdString());
    m_rearrangeBtn->setEnabled(false);
    m_setup.context.editQueue().submit(this, [this, names]() -> std::function<void()> {
        peekOrderSave(names);
        std::vector<const LabVariant*> types = peekOrderedTypes();
        return [this, types] {
            m_types = types;
            m_reorder = nullptr;
            m_rearrangeBtn->setEnabled(true);
            rebuildBar();
            showButtons(false);
            if (m_setup.hooks.peekOrderChanged)
                m_setup.hooks.peekOrderChanged();
            emit orderSaved();
        };
    });
}

void PeekModeView::rearrangeCancel()
{
    if (!m_reorder)
        return;
    m_reorder = nullptr;
    rebuildBar();
    showButtons(false);
}

void PeekModeView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (event->size().width() == m_renderedWidth || !m_style)
        return;
    // The plates flow again for the new width; the levels opened stay open.
    m_renderedWidth = event->size().width();
    m_style->updateGeometry();
}
