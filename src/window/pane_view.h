#pragma once
// A pane as it sits in the pane area: its header strip above its BrondelWindow.

#include <QWidget>

class BrondelWindow;
class PaneHeader;

class PaneView : public QWidget {
    Q_OBJECT
public:
    explicit PaneView(BrondelWindow* host, QWidget* parent = nullptr);

    BrondelWindow* host() const { return m_host; }
    PaneHeader* header() const { return m_header; }

private:
    BrondelWindow* m_host;
    PaneHeader* m_header;
};
