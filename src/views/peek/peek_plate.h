#pragma once
// The plate every Peek style draws an entry as: its icon, name and metadata line (a
// drive adds a usage bar), or the "+ N more" plate that ends a cut folder. A plate is
// a button for accessibility (its name and line are what a screen reader says, a
// press opens it) but never takes the keyboard focus: the style's keys drive the
// current plate, which is drawn with a ring.

#include "cards/lab_item.h"

#include <QAbstractButton>
#include <QPixmap>

class PeekPlate : public QAbstractButton {
    Q_OBJECT
public:
    enum class Size { Normal, Small };
    static constexpr int kWidth = 176;
    static constexpr int kHeight = 52;
    static constexpr int kSmallHeight = 30;

    PeekPlate(const LabItem& item, Size size, QWidget* parent = nullptr);
    // The "+ N more" plate of a folder that shows only its first entries.
    PeekPlate(int64_t more, const std::string& folder, Size size, QWidget* parent = nullptr);

    const LabItem& item() const { return m_item; }
    bool isMore() const { return m_more > 0; }
    void setCurrent(bool current);
    bool isCurrent() const { return m_current; }
    // A plate whose folder is open somewhere in the style (drawn tinted).
    void setOpened(bool opened);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setUp();
    void draw(QPainter& p) const;

    LabItem m_item;
    int64_t m_more = 0;
    Size m_size;
    QIcon m_icon;
    QString m_name;
    QString m_meta;
    bool m_current = false;
    bool m_opened = false;
    // The plate as last drawn: an animation moves plates every frame without changing
    // them, and a copy is far cheaper to draw than the text and icon again.
    QPixmap m_drawn;
    quint32 m_drawnState = 0;
};
