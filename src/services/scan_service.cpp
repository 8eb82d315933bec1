#include "services/scan_service.h"

#include "fs/fmt.h"
#include "fs/scanner.h"

ScanService::ScanService(int threads, QObject* parent)
    : QObject(parent)
    // Below the UI thread, above size walks. One thread is a queue whose tasks never
    // overlap, even when one is stuck: the edits of a file then apply in order.
    , m_work(threads, WorkClass::UserInitiated, threads == 1 ? WhenStuck::Wait : WhenStuck::AddThread)
{
    // The date formatter opens once per process, some 10 ms of locale data: here, on the
    // pool, rather than on the UI thread when a view first measures or draws a date.
    m_work.submit(nullptr, []() -> std::function<void()> {
        dateFmt(0);
        return {};
    });
}

ScanService::~ScanService() = default;

void ScanService::scan(const std::string& path, const BrondelSettings& settings, QObject* context, Done done,
    std::function<void()> before)
{
    submit(context, [path, settings, done = std::move(done), before = std::move(before)]() -> std::function<void()> {
        if (before)
            before();
        DirNodePtr root = scanListing(path, settings);
        return [done, root] { done(root); };
    });
}

DirNodePtr ScanService::scanListing(const std::string& path, const BrondelSettings& settings, ScanMeta meta)
{
    NodeStorePtr store = Scanner(settings).scanStore(path, 1, meta);
    const NodeRecord& folder = store->root();
    auto root = DirNode::make();
    root->name.assign(folder.name, folder.nameLength);
    root->path = path;
    root->isDir = true;
    root->childrenLoaded = true;
    root->readError = folder.readError;
    root->store = std::move(store);
    return root;
}

void ScanService::fillMeta(NodeStorePtr store, const NodeRecord* folder, std::shared_ptr<MetaFillState> state,
    QObject* context, std::function<void(bool)> progress)
{
    m_work.submitStreaming(context, [store, folder, state, progress](const BackgroundWork::Post& post) {
        // The records are the store's own: the filler writes them, the views read them
        // through nodeMeta(), and no one else writes them.
        nodeMetaFill(*store, const_cast<NodeRecord&>(*folder), *state, [&](bool finished) {
            post([progress, finished] { progress(finished); });
        });
    });
}

void ScanService::submit(QObject* context, Work work)
{
    m_work.submit(context, std::move(work));
}
