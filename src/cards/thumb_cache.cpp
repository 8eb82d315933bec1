#include "cards/thumb_cache.h"

#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "fs/trash_op_linux.h"

#include <QCryptographicHash>

#include <cerrno>
#include <charconv>
#include <cstdlib>

std::string_view thumbSizeDir(ThumbSize size)
{
    return size == ThumbSize::Large ? "large" : "normal";
}

int thumbSizePixels(ThumbSize size)
{
    return size == ThumbSize::Large ? 256 : 128;
}

ThumbSize thumbSizeFor(double pixels)
{
    return pixels > 128 ? ThumbSize::Large : ThumbSize::Normal;
}

std::string thumbUri(std::string_view path)
{
    return "file://" + trashPercentEncode(path); // the same rule as the Trash's Path= keys
}

std::string thumbFileName(std::string_view uri)
{
    const QByteArray digest = QCryptographicHash::hash(QByteArrayView(uri.data(), qsizetype(uri.size())),
        QCryptographicHash::Md5).toHex();
    return digest.toStdString() + ".png";
}

std::string thumbCacheRoot()
{
    const char* cache = std::getenv("XDG_CACHE_HOME");
    if (cache && *cache == '/')
        return std::string(cache) + "/thumbnails";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.cache/thumbnails";
}

std::string thumbPath(const std::string& root, ThumbSize size, std::string_view uri)
{
    return root + "/" + std::string(thumbSizeDir(size)) + "/" + thumbFileName(uri);
}

std::string thumbFailPath(const std::string& root, std::string_view app, std::string_view uri)
{
    return root + "/fail/" + std::string(app) + "/" + thumbFileName(uri);
}

bool thumbValid(const std::map<std::string, std::string>& keys, std::string_view uri, int64_t mtime)
{
    const auto stamp = keys.find("Thumb::MTime");
    if (stamp == keys.end())
        return false;
    int64_t stored = 0;
    const std::string& text = stamp->second;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), stored);
    if (error != std::errc() || end != text.data() + text.size() || stored != mtime)
        return false;
    const auto stored_uri = keys.find("Thumb::URI");
    return stored_uri == keys.end() || stored_uri->second == uri;
}

std::map<std::string, std::string> thumbKeys(std::string_view uri, int64_t mtime, int64_t size, std::string_view mime)
{
    std::map<std::string, std::string> keys{
        {"Thumb::URI", std::string(uri)},
        {"Thumb::MTime", std::to_string(mtime)},
        {"Thumb::Size", std::to_string(size)},
        {"Software", "Brondel"},
    };
    if (!mime.empty())
        keys["Thumb::Mime"] = std::string(mime);
    return keys;
}

bool thumbWrite(const std::string& path, std::string_view png)
{
    const std::string dir = path.substr(0, path.rfind('/'));
    if (!fileMakeDirs(dir))
        return false;
    const std::optional<std::string> temp = fileWriteTemp(path, png, 0600, TempMode::Exact);
    if (!temp)
        return false;
    if (sysCalls().rename(temp->c_str(), path.c_str()) != 0) {
        const int error = errno;
        sysCalls().unlink(temp->c_str());
        errno = error;
        return false;
    }
    return true;
}

std::optional<ThumbSource> thumbSourceOf(const std::string& path)
{
    struct stat st {};
    if (sysCalls().stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return std::nullopt;
    return ThumbSource{int64_t(st.st_mtime), int64_t(st.st_size)};
}
