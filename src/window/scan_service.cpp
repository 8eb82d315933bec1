#include "window/scan_service.h"

#include "fs/scanner.h"

ScanService::ScanService(int threads, QObject* parent)
    : QObject(parent)
    // Below the UI thread, above size walks. One thread is a queue whose tasks never
    // overlap, even when one is stuck: the edits of a file then apply in order.
    , m_work(threads, WorkClass::UserInitiated, threads == 1 ? WhenStuck::Wait : WhenStuck::AddThread)
{
}

ScanService::~ScanService() = default;

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
    m_work.submit(context, std::move(work));
}
