#pragma once
// Real previews for the icon view. A preview is taken from the shared thumbnail cache
// when a valid one is there; a missing one of an image is made on the loader's own
// threads (decoded already scaled down), written back in the standard's form for other
// programs, and kept in memory. Requests are served newest first, so what the view has
// just drawn (the items on screen) comes before what scrolled away. Nothing here runs
// on the UI thread but the bookkeeping.

#include "cards/thumb_cache.h"
#include "services/background_work.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

#include <atomic>
#include <string>
#include <vector>

// What one background request gave.
enum class ThumbOutcome { FromCache, Made, Failed, NotImage };

struct ThumbResult {
    QImage image;
    ThumbOutcome outcome = ThumbOutcome::NotImage;
};

// Reads or makes the preview of the file at `path` under the cache `root`. Any thread.
ThumbResult thumbnailProduce(const std::string& path, ThumbSize size, const std::string& root);

// Whether a file of that name is an image the loader can preview (by its ending).
bool thumbnailIsImageName(const QString& name);

class ThumbnailLoader : public QObject {
    Q_OBJECT
public:
    explicit ThumbnailLoader(int threads, std::string cacheRoot = thumbCacheRoot(), QObject* parent = nullptr);

    // The process's loader (three threads), made on first use on the main thread and
    // never destroyed.
    static ThumbnailLoader& shared();

    // The preview of `path` for icons of `pixels`, when it is ready; otherwise null, and
    // the file is queued (once). Main thread.
    QImage preview(const std::string& path, double pixels);

    // Forgets what is queued but not started (a view scrolled or went away); ready()
    // follows, so the views on screen ask again for the items they show.
    void dropQueued();

    // Counts of finished requests by outcome (benchmarks, tests).
    int finished(ThumbOutcome outcome) const { return m_counts[int(outcome)]; }
    // Requests queued or running.
    int pending() const { return int(m_wanted.size()) + m_running; }

signals:
    // Previews have arrived (at most one per 50 ms burst): draw again.
    void ready();

private:
    struct Job {
        std::string path;
        ThumbSize size;
        QString key;
    };
    void pump();

    std::string m_root;
    int m_threads;
    int m_running = 0;
    std::vector<Job> m_wanted; // newest last
    QSet<QString> m_known;     // queued, running or done
    QHash<QString, QImage> m_images;
    int m_counts[4] = {0, 0, 0, 0};
    QTimer m_announce;
    BackgroundWork m_work;
};
