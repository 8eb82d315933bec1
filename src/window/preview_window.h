#pragma once
// The Space-bar preview: a window beside the browser window showing the selected item.
// Images fit the window (a click toggles actual size, Ctrl+wheel zooms; animated GIFs
// play), text shows its first megabyte in a fixed-width font, PDF pages are drawn,
// audio and video play, folders show their item count and size, anything else its
// facts with a large icon. Everything is read on the window's own pool; a newer item
// drops the results of an older one, so a FIFO or a hung drive never freezes anything.
// The window never takes the keyboard: the pane keeps it, and arrow keys there move the
// selection while the preview follows.

#include "fs/preview_load.h"
#include "services/background_work.h"

#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <string>

class QLabel;
class QMovie;
class QPlainTextEdit;
class QScrollArea;
class QStackedWidget;
struct PreviewResult;

class PreviewWindow : public QWidget {
    Q_OBJECT
public:
    explicit PreviewWindow(QWidget* beside);
    ~PreviewWindow() override;

    // Shows the window beside its browser window (if hidden) and loads `path`.
    void showFor(const std::string& path);
    const std::string& path() const { return m_path; }

    // What the last landed result shows, for tests and the accessible description.
    PreviewKind shownKind() const { return m_kind; }
    bool isLoaded() const { return m_loaded; }
    QString shownText() const;       // text previews
    QSize shownImageSize() const;    // image previews: the decoded image's size
    int shownPages() const;          // PDF previews: pages drawn
    QString shownFacts() const;      // the facts line(s)
    bool playsMovie() const { return m_movie != nullptr; }

    // Whether PDF pages can be drawn in this build.
    static bool pdfSupported();

signals:
    void closeRequested(); // Escape or Space while the window itself has the keyboard
    void loaded();
    void closed(); // hidden, by any means

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void land(std::shared_ptr<PreviewResult> result);
    void showImage();
    void placeBeside();
    void stopMedia();

    QPointer<QWidget> m_beside;
    BackgroundWork m_work;
    int64_t m_generation = 0;
    std::string m_path;
    PreviewKind m_kind = PreviewKind::Other;
    bool m_loaded = false;
    std::shared_ptr<PreviewResult> m_result;

    QStackedWidget* m_stack = nullptr;
    QScrollArea* m_imageArea = nullptr;
    QLabel* m_image = nullptr;
    QPlainTextEdit* m_text = nullptr;
    QScrollArea* m_pagesArea = nullptr;
    QWidget* m_pages = nullptr;
    QLabel* m_icon = nullptr;
    QLabel* m_facts = nullptr;
    QLabel* m_caption = nullptr;
    QWidget* m_media = nullptr;
    QMovie* m_movie = nullptr;
    double m_zoom = 0; // 0: fit the window
};
