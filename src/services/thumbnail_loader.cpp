#include "services/thumbnail_loader.h"

#include "fs/file_io.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QMimeDatabase>


#include <map>

namespace {

// Whose failure records ours are, as the standard names them (fail/<app>/).
constexpr const char* kFailApp = "brondel";

std::map<std::string, std::string> textKeysOf(const QImage& image)
{
    std::map<std::string, std::string> keys;
    for (const QString& key : image.textKeys())
        keys[key.toStdString()] = image.text(key).toStdString();
    return keys;
}

// A stored PNG whose keys say it belongs to this file, or null.
QImage validStored(const std::string& file, const std::string& uri, int64_t mtime)
{
    const std::optional<std::string> bytes = fileReadAll(file);
    if (!bytes)
        return {};
    QByteArray data = QByteArray::fromStdString(*bytes);
    QBuffer buffer(&data);
    QImageReader reader(&buffer, "png");
    // The text keys are only known once the image is read (they may follow the pixels).
    QImage image = reader.read();
    if (image.isNull() || !thumbValid(textKeysOf(image), uri, mtime))
        return {};
    return image;
}

bool writeWithKeys(QImage image, const std::string& path, const std::map<std::string, std::string>& keys)
{
    for (const auto& [key, value] : keys)
        image.setText(QString::fromStdString(key), QString::fromStdString(value));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image))
        return false;
    return thumbWrite(path, std::string_view(png.constData(), size_t(png.size())));
}

} // namespace

bool thumbnailIsImageName(const QString& name)
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0)
        return false;
    const QByteArray ending = name.mid(dot + 1).toLower().toLatin1();
    return ending != "svg" && ending != "svgz" && formats.contains(ending);
}

ThumbResult thumbnailProduce(const std::string& path, ThumbSize size, const std::string& root)
{
    const QString name = QFile::decodeName(QByteArray::fromStdString(path.substr(path.rfind('/') + 1)));
    if (!thumbnailIsImageName(name))
        return {};
    const std::optional<ThumbSource> source = thumbSourceOf(path);
    if (!source)
        return {{}, ThumbOutcome::Failed};
    const std::string uri = thumbUri(path);
    const int64_t mtime = source->mtime;
    if (QImage stored = validStored(thumbPath(root, size, uri), uri, mtime); !stored.isNull())
        return {std::move(stored), ThumbOutcome::FromCache};
    const std::string failPath = thumbFailPath(root, kFailApp, uri);
    if (!validStored(failPath, uri, mtime).isNull())
        return {{}, ThumbOutcome::Failed}; // tried before, and this version of the file cannot be read
    const std::string mime = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension).name().toStdString();
    const auto keys = thumbKeys(uri, mtime, source->size, mime);

    const std::optional<std::string> bytes = fileReadAll(path);
    QImage image;
    if (bytes) {
        QByteArray data = QByteArray::fromStdString(*bytes);
        QBuffer buffer(&data);
        QImageReader reader(&buffer);
        reader.setAutoTransform(true);
        const QSize full = reader.size();
        const int edge = thumbSizePixels(size);
        if (full.isValid() && (full.width() > edge || full.height() > edge))
            reader.setScaledSize(full.scaled(edge, edge, Qt::KeepAspectRatio)); // decoded small, never whole
        image = reader.read();
    }
    if (image.isNull()) {
        QImage mark(1, 1, QImage::Format_ARGB32);
        mark.fill(Qt::transparent);
        writeWithKeys(mark, failPath, keys);
        return {{}, ThumbOutcome::Failed};
    }
    image = image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    writeWithKeys(image, thumbPath(root, size, uri), keys);
    return {std::move(image), ThumbOutcome::Made};
}

ThumbnailLoader::ThumbnailLoader(int threads, std::string cacheRoot, QObject* parent)
    : QObject(parent)
    , m_root(std::move(cacheRoot))
    , m_threads(std::max(1, threads))
    , m_work(m_threads, WorkClass::Utility)
{
    m_announce.setSingleShot(true);
    m_announce.setInterval(50);
    connect(&m_announce, &QTimer::timeout, this, &ThumbnailLoader::ready);
}

ThumbnailLoader& ThumbnailLoader::shared()
{
    static auto* loader = new ThumbnailLoader(3); // outlives exit: its threads may still run
    return *loader;
}

QImage ThumbnailLoader::preview(const std::string& path, double pixels)
{
    const ThumbSize size = thumbSizeFor(pixels);
    const QString key = QString::number(int(size)) + QFile::decodeName(QByteArray::fromStdString(path));
    if (auto it = m_images.constFind(key); it != m_images.constEnd())
        return *it;
    if (m_known.contains(key)) {
        // Still wanted: move it to the front of the queue when it waits there.
        for (size_t i = 0; i < m_wanted.size(); ++i)
            if (m_wanted[i].key == key) {
                std::rotate(m_wanted.begin() + qsizetype(i), m_wanted.begin() + qsizetype(i) + 1, m_wanted.end());
                break;
            }
        return {};
    }
    m_known.insert(key);
    m_wanted.push_back({path, size, key});
    pump();
    return {};
}

void ThumbnailLoader::dropQueued()
{
    if (m_wanted.empty())
        return;
    for (const Job& job : m_wanted)
        m_known.remove(job.key);
    m_wanted.clear();
    // Views still showing items draw again and so ask for what is on screen now.
    if (!m_announce.isActive())
        m_announce.start();
}

void ThumbnailLoader::pump()
{
    while (m_running < m_threads && !m_wanted.empty()) {
        Job job = std::move(m_wanted.back());
        m_wanted.pop_back();
        ++m_running;
        m_work.submit(this, [this, job, root = m_root]() -> std::function<void()> {
            ThumbResult result = thumbnailProduce(job.path, job.size, root);
            return [job, result = std::move(result), this] {
                --m_running;
                ++m_counts[int(result.outcome)];
                if (!result.image.isNull())
                    m_images.insert(job.key, result.image);
                if (m_images.size() > 4000) { // a bound on memory: far more than any screen shows
                    m_images.clear();
                    m_known.clear();
                }
                if (!m_announce.isActive())
                    m_announce.start();
                pump();
            };
        });
    }
}
