#include "window/preview_window.h"

#include "fs/file_info.h"
#include "fs/file_io.h"
#include "fs/fmt.h"
#include "fs/paths.h"
#include "sizes/folder_size_walk.h"

#include <QApplication>
#include <QBuffer>
#include <QFile>
#include <QFontDatabase>
#include <QIcon>
#include <QImageReader>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeDatabase>
#include <QMovie>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollArea>
#include <QStackedWidget>
#include <QUrl>
#include <QVBoxLayout>
#include <QWheelEvent>

#ifdef BRONDEL_HAVE_POPPLER
#include <poppler-qt6.h>
#endif
#ifdef BRONDEL_HAVE_MULTIMEDIA
#include <QAudioOutput>
#include <QMediaPlayer>
#include <QVideoWidget>
#endif

#include <cerrno>
#include <cstring>
#include <sys/stat.h> // the mode tests (S_ISDIR, ...) of previewNodeOf's answer

// What a load found, handed from the pool to the window whole.
struct PreviewResult {
    PreviewKind kind = PreviewKind::Other;
    QImage image;
    QByteArray animation; // an animated image's bytes, played by a QMovie
    PreviewText text;
    bool truncated = false;
    std::vector<QImage> pages;
    int pageCount = 0;
    QString facts;
    QString iconName;
};

namespace {

constexpr int kMaxPages = 10;
constexpr int kPageWidth = 560;
constexpr int kGap = 8;
constexpr int kMaxImageSide = 4096;

QString decode(const std::string& bytes) { return QFile::decodeName(QByteArray::fromStdString(bytes)); }

QString factsOf(const FileInfo& info)
{
    QStringList lines{decode(info.name), QObject::tr("Kind: %1").arg(QString::fromStdString(info.kind))};
    if (info.kind != "inode/directory")
        lines << QObject::tr("Size: %1").arg(QString::fromStdString(fmtHuman(info.size)));
    if (info.created)
        lines << QObject::tr("Created: %1").arg(QString::fromStdString(dateFmt(*info.created)));
    if (info.modified)
        lines << QObject::tr("Modified: %1").arg(QString::fromStdString(dateFmt(*info.modified)));
    lines << QObject::tr("Permissions: %1").arg(QString::fromStdString(info.permissions));
    return lines.join(QLatin1Char('\n'));
}

QString specialKind(mode_t mode)
{
    if (S_ISFIFO(mode))
        return QStringLiteral("inode/fifo");
    if (S_ISSOCK(mode))
        return QStringLiteral("inode/socket");
    if (S_ISCHR(mode))
        return QStringLiteral("inode/chardevice");
    if (S_ISBLK(mode))
        return QStringLiteral("inode/blockdevice");
    return QStringLiteral("unknown");
}

void loadImage(PreviewResult& result, const std::string& bytes)
{
    QByteArray data = QByteArray::fromStdString(bytes);
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    if (reader.supportsAnimation() && reader.imageCount() > 1) {
        result.animation = data;
        return;
    }
    buffer.seek(0);
    QImageReader still(&buffer);
    still.setAutoTransform(true);
    // A camera's 50-megapixel photo would pass Qt's decoding limit, and no screen shows
    // it whole anyway: larger images are decoded straight to a smaller size.
    const QSize full = still.size();
    if (full.width() > kMaxImageSide || full.height() > kMaxImageSide)
        still.setScaledSize(full.scaled(kMaxImageSide, kMaxImageSide, Qt::KeepAspectRatio));
    result.image = still.read();
    if (result.image.isNull())
        result.kind = PreviewKind::Other;
}

void loadPdf(PreviewResult& result, const std::string& bytes)
{
#ifdef BRONDEL_HAVE_POPPLER
    // Poppler reports a damaged file on stderr unless told where else to say it.
    static const bool quiet = [] {
        Poppler::setDebugErrorFunction([](const QString&, const QVariant&) {}, QVariant());
        return true;
    }();
    (void)quiet;
    std::unique_ptr<Poppler::Document> doc = Poppler::Document::loadFromData(QByteArray::fromStdString(bytes));
    if (!doc || doc->isLocked()) {
        result.kind = PreviewKind::Other;
        return;
    }
    doc->setRenderHint(Poppler::Document::Antialiasing);
    doc->setRenderHint(Poppler::Document::TextAntialiasing);
    result.pageCount = doc->numPages();
    for (int i = 0; i < std::min(result.pageCount, kMaxPages); ++i) {
        std::unique_ptr<Poppler::Page> page = doc->page(i);
        if (!page)
            break;
        const double points = std::max(1.0, page->pageSizeF().width());
        const double dpi = 72.0 * kPageWidth / points;
        result.pages.push_back(page->renderToImage(dpi, dpi));
    }
#else
    (void)bytes;
    result.kind = PreviewKind::Other;
#endif
}

// Everything the preview of `path` needs, read on a pool thread.
std::shared_ptr<PreviewResult> previewLoad(const std::string& path)
{
    auto result = std::make_shared<PreviewResult>();
    const PreviewNode node = previewNodeOf(path);
    if (node.error) {
        result->facts = decode(pathLastComponent(path)) + QLatin1Char('\n') + QString::fromLocal8Bit(std::strerror(node.error));
        return result;
    }
    if (S_ISDIR(node.mode)) {
        result->kind = PreviewKind::Folder;
        result->iconName = QStringLiteral("folder");
        QString facts = factsOf(FileInfo::gather(path));
        const int64_t items = previewFolderCount(path);
        if (items >= 0)
            facts += QLatin1Char('\n') + QObject::tr("%n item(s)", nullptr, int(items));
        facts += QLatin1Char('\n')
            + QObject::tr("Size: %1").arg(QString::fromStdString(fmtHuman(folderSizeWalk(path, 1))));
        result->facts = facts;
        return result;
    }
    if (!S_ISREG(node.mode)) { // never opened: a FIFO would wait for a writer
        result->facts = decode(pathLastComponent(path)) + QLatin1Char('\n')
            + QObject::tr("Kind: %1").arg(specialKind(node.mode));
        return result;
    }
    const PreviewHead sniff = previewReadHead(path, kPreviewSniffBytes);
    result->kind = sniff.error ? PreviewKind::Other : previewKindFor(pathLastComponent(path), sniff.bytes);
    const FileInfo info = FileInfo::gather(path);
    result->facts = factsOf(info);
    static QMimeDatabase* const db = new QMimeDatabase; // never destroyed: pool threads may outlive exit
    const QMimeType type = db->mimeTypeForName(QString::fromStdString(info.kind));
    result->iconName = type.isValid() ? type.iconName() : QStringLiteral("text-x-generic");
    switch (result->kind) {
    case PreviewKind::Text: {
        const PreviewHead head = previewReadHead(path, kPreviewTextCap);
        result->text = previewTextDecode(head.bytes);
        result->truncated = head.truncated;
        break;
    }
    case PreviewKind::Image:
    case PreviewKind::Pdf: {
        if (size_t(node.size) > kPreviewDocumentCap) {
            result->kind = PreviewKind::Other;
            break;
        }
        const PreviewHead head = previewReadHead(path, kPreviewDocumentCap);
        if (result->kind == PreviewKind::Image)
            loadImage(*result, head.bytes);
        else
            loadPdf(*result, head.bytes);
        break;
    }
    case PreviewKind::Audio:
    case PreviewKind::Video:
#ifndef BRONDEL_HAVE_MULTIMEDIA
        result->kind = PreviewKind::Other;
#endif
        break;
    default:
        break;
    }
    return result;
}

QLabel* factsLabel(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

PreviewWindow::PreviewWindow(QWidget* beside)
    : QWidget(beside, Qt::Tool)
    , m_beside(beside)
    , m_work(2, WorkClass::UserInitiated)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(tr("Preview"));
    resize(600, 640);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_stack = new QStackedWidget(this);
    layout->addWidget(m_stack, 1);
    m_caption = new QLabel(this);
    m_caption->setAlignment(Qt::AlignCenter);
    m_caption->setContentsMargins(6, 4, 6, 4);
    layout->addWidget(m_caption);

    m_imageArea = new QScrollArea(m_stack);
    m_imageArea->setAlignment(Qt::AlignCenter);
    m_imageArea->setFocusPolicy(Qt::NoFocus);
    m_image = new QLabel;
    m_image->setAlignment(Qt::AlignCenter);
    m_image->setToolTip(tr("Click for actual size or to fit; Ctrl+wheel zooms"));
    m_image->installEventFilter(this);
    m_imageArea->viewport()->installEventFilter(this);
    m_imageArea->setWidget(m_image);
    m_stack->addWidget(m_imageArea);

    m_text = new QPlainTextEdit(m_stack);
    m_text->setReadOnly(true);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setFocusPolicy(Qt::ClickFocus);
    m_stack->addWidget(m_text);

    m_pagesArea = new QScrollArea(m_stack);
    m_pagesArea->setWidgetResizable(true);
    m_pagesArea->setFocusPolicy(Qt::NoFocus);
    m_pages = new QWidget;
    new QVBoxLayout(m_pages);
    m_pagesArea->setWidget(m_pages);
    m_stack->addWidget(m_pagesArea);

    auto* factsPage = new QWidget(m_stack);
    auto* factsLayout = new QVBoxLayout(factsPage);
    m_icon = new QLabel(factsPage);
    m_icon->setAlignment(Qt::AlignCenter);
    factsLayout->addStretch(1);
    factsLayout->addWidget(m_icon);
    m_facts = factsLabel(factsPage);
    factsLayout->addWidget(m_facts);
    factsLayout->addStretch(2);
    m_stack->addWidget(factsPage);
}

PreviewWindow::~PreviewWindow() { stopMedia(); }

bool PreviewWindow::pdfSupported()
{
#ifdef BRONDEL_HAVE_POPPLER
    return true;
#else
    return false;
#endif
}

void PreviewWindow::placeBeside()
{
    if (!m_beside)
        return;
    const QRect frame = m_beside->window()->frameGeometry();
    const QScreen* screen = m_beside->screen();
    const QRect room = screen ? screen->availableGeometry() : QRect();
    QPoint at(frame.right() + kGap, frame.top());
    if (!room.isEmpty() && at.x() + width() > room.right())
        at.setX(std::max(room.left(), frame.left() - width() - kGap));
    move(at);
}

void PreviewWindow::showFor(const std::string& path)
{
    if (!isVisible()) {
        placeBeside();
        show();
        // The browser window keeps the keyboard, where the arrows move the selection
        // (some window systems activate every new window whatever it asks).
        if (m_beside)
            m_beside->window()->activateWindow();
    }
    if (path == m_path)
        return; // already shown or on its way
    m_path = path;
    m_loaded = false;
    const int64_t gen = ++m_generation;
    setWindowTitle(decode(pathLastComponent(path)));
    m_caption->setText(tr("Loading…"));
    m_work.submit(this, [this, gen, path]() -> std::function<void()> {
        std::shared_ptr<PreviewResult> result = previewLoad(path);
        return [this, gen, result] {
            if (gen == m_generation) // an item the user has moved past is dropped
                land(result);
        };
    });
}

void PreviewWindow::stopMedia()
{
    delete m_movie;
    m_movie = nullptr;
    if (m_media) {
        m_stack->removeWidget(m_media);
        delete m_media; // the player and its output are its children
        m_media = nullptr;
    }
}

void PreviewWindow::land(std::shared_ptr<PreviewResult> result)
{
    stopMedia();
    m_result = std::move(result);
    const PreviewResult& r = *m_result;
    m_kind = r.kind;
    m_zoom = 0;
    m_caption->setText(decode(pathLastComponent(m_path)));
    switch (r.kind) {
    case PreviewKind::Image:
        if (!r.animation.isEmpty()) {
            auto* buffer = new QBuffer(this);
            buffer->setData(r.animation);
            buffer->open(QIODevice::ReadOnly);
            m_movie = new QMovie(buffer, QByteArray(), this);
            buffer->setParent(m_movie);
            m_image->setMovie(m_movie);
            m_image->adjustSize();
            m_movie->start();
        }
        showImage();
        m_stack->setCurrentWidget(m_imageArea);
        break;
    case PreviewKind::Text:
        m_text->setPlainText(r.text.text);
        if (r.truncated)
            m_caption->setText(tr("%1 — the first %2 shown").arg(decode(pathLastComponent(m_path)),
                QString::fromStdString(fmtHuman(int64_t(kPreviewTextCap)))));
        m_stack->setCurrentWidget(m_text);
        break;
    case PreviewKind::Pdf: {
        QLayout* layout = m_pages->layout();
        while (QLayoutItem* item = layout->takeAt(0)) {
            delete item->widget();
            delete item;
        }
        for (const QImage& page : r.pages) {
            auto* label = new QLabel(m_pages);
            label->setPixmap(QPixmap::fromImage(page));
            label->setAlignment(Qt::AlignHCenter);
            layout->addWidget(label);
        }
        m_caption->setText(tr("%1 — %n page(s)", nullptr, r.pageCount).arg(decode(pathLastComponent(m_path))));
        m_stack->setCurrentWidget(m_pagesArea);
        break;
    }
    case PreviewKind::Audio:
    case PreviewKind::Video:
#ifdef BRONDEL_HAVE_MULTIMEDIA
    {
        m_media = new QWidget(m_stack);
        auto* layout = new QVBoxLayout(m_media);
        auto* player = new QMediaPlayer(m_media);
        auto* output = new QAudioOutput(player);
        player->setAudioOutput(output);
        if (r.kind == PreviewKind::Video) {
            auto* video = new QVideoWidget(m_media);
            layout->addWidget(video);
            player->setVideoOutput(video);
        } else {
            auto* facts = factsLabel(m_media);
            facts->setText(r.facts);
            layout->addWidget(facts);
        }
        m_stack->addWidget(m_media);
        m_stack->setCurrentWidget(m_media);
        player->setSource(QUrl::fromLocalFile(decode(m_path)));
        player->play();
        break;
    }
#endif
    default:
        m_icon->setPixmap(QIcon::fromTheme(r.iconName, QIcon::fromTheme(QStringLiteral("text-x-generic")))
                              .pixmap(128, 128));
        m_facts->setText(r.facts);
        m_stack->setCurrentWidget(m_facts->parentWidget());
        break;
    }
    m_loaded = true;
    emit loaded();
}

void PreviewWindow::showImage()
{
    if (m_movie || !m_result || m_result->image.isNull())
        return;
    const QImage& image = m_result->image;
    const QSize room = m_imageArea->viewport()->size() - QSize(2, 2);
    QSize size = image.size();
    if (m_zoom <= 0) {
        if (size.width() > room.width() || size.height() > room.height())
            size = size.scaled(room, Qt::KeepAspectRatio);
    } else {
        size = size * m_zoom;
    }
    m_image->setPixmap(QPixmap::fromImage(
        size == image.size() ? image : image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    m_image->resize(m_image->sizeHint());
}

bool PreviewWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (m_kind == PreviewKind::Image && !m_movie) {
        if (event->type() == QEvent::Resize && watched == m_imageArea->viewport() && m_zoom <= 0) {
            showImage();
        } else if (event->type() == QEvent::MouseButtonRelease && watched == m_image) {
            m_zoom = m_zoom > 0 ? 0 : 1; // fit, or actual size
            showImage();
            return true;
        } else if (event->type() == QEvent::Wheel
            && (static_cast<QWheelEvent*>(event)->modifiers() & Qt::ControlModifier)) {
            const QImage& image = m_result->image;
            const double current = m_zoom > 0 ? m_zoom
                                              : double(m_image->pixmap().width()) / std::max(1, image.width());
            const double step = static_cast<QWheelEvent*>(event)->angleDelta().y() > 0 ? 1.25 : 0.8;
            m_zoom = std::clamp(current * step, 0.05, 16.0);
            showImage();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void PreviewWindow::hideEvent(QHideEvent* event)
{
    // Nothing keeps playing in a closed preview, and the next one loads afresh.
    stopMedia();
    m_path.clear();
    ++m_generation;
    QWidget::hideEvent(event);
    emit closed();
}

void PreviewWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Space) {
        emit closeRequested();
        return;
    }
    QWidget::keyPressEvent(event);
}

QString PreviewWindow::shownText() const { return m_kind == PreviewKind::Text ? m_text->toPlainText() : QString(); }

QSize PreviewWindow::shownImageSize() const
{
    if (m_movie)
        return m_movie->frameRect().size();
    return m_result && m_kind == PreviewKind::Image ? m_result->image.size() : QSize();
}

int PreviewWindow::shownPages() const { return m_result ? int(m_result->pages.size()) : 0; }

QString PreviewWindow::shownFacts() const { return m_facts->text(); }
