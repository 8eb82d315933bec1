#pragma once
// Shared pieces of the GUI tests: a main that isolates the environment before the
// application object exists, a folder-read service that holds results until the test
// releases them, and a context wired to both.

#include "config/brondel_settings.h"
#include "fs/node_store.h"
#include "fs/scanner.h"
#include "ops/op_queue.h"
#include "support/test_env.h"
#include "services/browser_context.h"
#include "window/browser_frame.h"
#include "services/scan_service.h"

#include <QApplication>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// The names of a folder's entries as read, in order, whichever form they were read in
// (DirNodes, or the compact store of a window's load).
inline std::vector<std::string> entryNames(const DirNodePtr& node)
{
    std::vector<std::string> out;
    for (const auto& child : node->children)
        out.push_back(child->name);
    if (node->store)
        for (uint32_t i = 0; i < node->store->root().childCount; ++i)
            out.emplace_back(node->store->root().children[i].nameView());
    return out;
}

#define BRONDEL_GUI_TEST_MAIN(TestClass)            \
    int main(int argc, char** argv)                 \
    {                                               \
        testIsolateEnvironment();                   \
        QApplication app(argc, argv);               \
        app.setAttribute(Qt::AA_Use96Dpi, true);    \
        TestClass test;                             \
        QTEST_SET_MAIN_SOURCE_PATH                  \
        return QTest::qExec(&test, argc, argv);     \
    }

// Folder reads that wait for the test: each request is kept until finish() runs it.
class ManualScans : public ScanService {
public:
    struct Request {
        std::string path;
        QPointer<QObject> context;
        Done done;
        std::function<void()> before;
    };

    void scan(const std::string& path, const BrondelSettings&, QObject* context, Done done,
        std::function<void()> before = {}) override
    {
        m_requests.push_back({path, context, std::move(done), std::move(before)});
    }

    size_t count() const { return m_requests.size(); }
    // How many results reached a requester that still existed.
    size_t delivered() const { return m_delivered; }
    const std::string& path(size_t i) const { return m_requests.at(i).path; }

    // Reads the folder of request i now and hands it over, as the pool would.
    void finish(size_t i)
    {
        Request& r = m_requests.at(i);
        if (!r.context)
            return;
        ++m_delivered;
        if (r.before)
            r.before();
        r.done(ScanService::scanListing(r.path, BrondelSettings{}));
    }
    void finishAll()
    {
        for (size_t i = 0; i < m_requests.size(); ++i)
            finish(i);
        m_requests.clear();
    }

private:
    std::vector<Request> m_requests;
    size_t m_delivered = 0;
};

// A context whose reads and delayed calls are in the test's hands.
struct TestContext {
    OpQueue ops; // the real file operations, on temporary trees
    ManualScans scans;
    ScanService edits{1};
    BrondelSettings settings;
    BrowserContext context;
    std::vector<std::pair<QPointer<QObject>, std::function<void()>>> deferred;
    std::vector<DirNodePtr> headers;

    TestContext()
    {
        context.scans = &scans;
        context.edits = &edits;
        context.ops = &ops;
        context.settings = &settings;
        context.animate = false;
        context.defer = [this](int, QObject* ctx, std::function<void()> call) { deferred.emplace_back(ctx, call); };
        context.pinnedNodes = [this] { return headers; };
        context.recentsNote = [](const std::string&) {};
        context.computerRootBuild = [] {
            auto root = DirNode::make();
            root->name = "TestComputer";
            root->path = "/";
            root->isDir = true;
            root->childrenLoaded = true;
            return root;
        };
    }

    // Runs the delayed calls scheduled so far (the 0.12 s dimming checks) whose
    // context still exists; returns how many ran.
    size_t fireDeferred()
    {
        auto calls = std::move(deferred);
        deferred.clear();
        size_t ran = 0;
        for (auto& [ctx, call] : calls) {
            if (ctx) {
                call();
                ++ran;
            }
        }
        return ran;
    }
};

// A section header node with entries, as the favourites give them.
inline DirNodePtr testHeader(const std::string& title, const std::string& path, std::vector<std::string> entries,
    std::optional<double> hue = std::nullopt)
{
    auto header = DirNode::make();
    header->name = title;
    header->path = path;
    header->isSectionHeader = true;
    header->childrenLoaded = true;
    header->hue = hue;
    for (const auto& entry : entries) {
        auto node = DirNode::make();
        node->name = entry.substr(entry.rfind('/') + 1);
        node->path = entry;
        node->isDir = true;
        node->kind = "Folder";
        node->isPinned = true;
        node->hue = hue;
        header->children.push_back(node);
    }
    return header;
}

// A window on `path` that stays alive when closed (the test owns it).
inline std::unique_ptr<BrowserFrame> testFrame(TestContext& t, const std::string& path)
{
    auto root = DirNode::make();
    root->path = path;
    root->isDir = true;
    auto frame = std::make_unique<BrowserFrame>(root, RootKind::Folder, t.context);
    frame->setAttribute(Qt::WA_DeleteOnClose, false);
    return frame;
}
