#pragma once
// The cable connector in a pane header: drag from it to another pane to make that pane
// follow this one; a click without moving detaches every cable of the pane; right-click
// offers mirroring, swapping and detaching.

#include <QWidget>

class JackView : public QWidget {
    Q_OBJECT
public:
    explicit JackView(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {18, 18}; }
    // Drawn filled when the pane has cables, in the colour of its first one.
    void setState(bool linked, QColor color);

signals:
    void dragged(QPoint globalPos);
    void released(QPoint globalPos, bool moved);
    void hovered(bool inside);
    void menuRequested(QPoint globalPos);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    bool m_moved = false;
    bool m_linked = false;
    QColor m_color;
};
