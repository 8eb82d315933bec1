#include "services/file_clipboard.h"

#include <QByteArray>
#include <QList>

namespace {

const QString kUriList = QStringLiteral("text/uri-list");
const QString kGnome = QStringLiteral("x-special/gnome-copied-files");
const QString kKdeCut = QStringLiteral("application/x-kde-cutselection");
const QString kText = QStringLiteral("text/plain");

std::vector<std::string> pathsOfUris(const QList<QByteArray>& lines)
{
    std::vector<std::string> paths;
    for (QByteArray line : lines) {
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue; // comments are allowed in a URI list
        if (auto path = fileClipboardPathOfUrl(std::string_view(line.constData(), size_t(line.size()))))
            paths.push_back(std::move(*path));
    }
    return paths;
}

} // namespace

std::string fileClipboardUrl(const std::string& path)
{
    return "file://" + QByteArray::fromStdString(path).toPercentEncoding("/").toStdString();
}

std::optional<std::string> fileClipboardPathOfUrl(std::string_view url)
{
    constexpr std::string_view scheme = "file://";
    if (url.substr(0, scheme.size()) != scheme)
        return std::nullopt;
    std::string_view rest = url.substr(scheme.size());
    const size_t slash = rest.find('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    const std::string_view host = rest.substr(0, slash);
    if (!host.empty() && host != "localhost")
        return std::nullopt; // another machine's file
    const QByteArray path = QByteArray::fromPercentEncoding(QByteArray(rest.data() + slash, qsizetype(rest.size() - slash)));
    if (path.isEmpty())
        return std::nullopt;
    return path.toStdString();
}

QMimeData* fileClipboardData(const std::vector<std::string>& paths, ClipboardIntent intent)
{
    QByteArray uris;
    QByteArray text;
    for (const std::string& path : paths) {
        uris += QByteArray::fromStdString(fileClipboardUrl(path)) + "\r\n";
        text += QByteArray::fromStdString(path) + "\n";
    }
    text.chop(1);
    const bool cut = intent == ClipboardIntent::Cut;
    auto* data = new QMimeData;
    data->setData(kUriList, uris);
    data->setData(kGnome, QByteArray(cut ? "cut\n" : "copy\n") + uris.trimmed().replace("\r\n", "\n"));
    data->setData(kKdeCut, cut ? "1" : "0");
    data->setData(kText, text);
    return data;
}

std::optional<ClipboardFiles> fileClipboardRead(const QMimeData& data)
{
    ClipboardFiles files;
    if (data.hasFormat(kGnome)) {
        QList<QByteArray> lines = data.data(kGnome).split('\n');
        const QByteArray verb = lines.isEmpty() ? QByteArray() : lines.takeFirst().trimmed();
        if (verb == "cut" || verb == "copy") {
            files.intent = verb == "cut" ? ClipboardIntent::Cut : ClipboardIntent::Copy;
            files.paths = pathsOfUris(lines);
            if (!files.paths.empty())
                return files;
        }
    }
    if (data.hasFormat(kUriList)) {
        files.paths = pathsOfUris(data.data(kUriList).split('\n'));
        files.intent = data.data(kKdeCut).trimmed() == "1" ? ClipboardIntent::Cut : ClipboardIntent::Copy;
        if (!files.paths.empty())
            return files;
    }
    if (data.hasFormat(kText)) {
        files.intent = ClipboardIntent::Copy;
        files.paths.clear();
        for (const QByteArray& line : data.data(kText).split('\n')) {
            const QByteArray path = line.trimmed();
            if (!path.startsWith('/'))
                return std::nullopt; // text that is not only paths is not files
            files.paths.push_back(path.toStdString());
        }
        if (!files.paths.empty())
            return files;
    }
    return std::nullopt;
}
