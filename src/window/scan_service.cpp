#include "window/scan_service.h"

#include "fs/scanner.h"
#include "fs/work_class.h"

#include <QPointer>

ScanService::ScanService(int threads, QObject* parent)
    : QObject(parent)
{
    m_pool.setMaxThreadCount(threads);
}

ScanService::~ScanService()
{
    m_pool.waitForDone();
}

void ScanService::scan(const std::string& path, const BrondelSettings& settings, QObject* context, Done done)
{
    submit(context, [path, settings, done = std::move(done)]() -> std::function<void()> {
        Scanner scanner(settings);
        DirNodePtr root = scanner.scan(path, 1);
        return [done, root] { done(root); };
    });
}

void ScanService::submit(QObject* context, Work work)
{
    // The guard is made and read on the main thread only; the worker merely carries it.
    QPointer<QObject> guard(context);
    m_pool.start([this, guard, work = std::move(work)] {
        threadSetWorkClass(WorkClass::UserInitiated); // below the UI thread, above size walks
        std::function<void()> then = work();
        QMetaObject::invokeMethod(
            this,
            [guard, then = std::move(then)] {
                if (guard)
                    then();
            },
            Qt::QueuedConnection);
    });
}
