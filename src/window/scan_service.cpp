#include "window/scan_service.h"

#include "fs/scanner.h"

ScanService::ScanService(int threads, QObject* parent)
    : QObject(parent)
    , m_work(threads, WorkClass::UserInitiated) // below the UI thread, above size walks
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
