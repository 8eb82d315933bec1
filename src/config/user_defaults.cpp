#include "config/user_defaults.h"

#include "fs/file_io.h"
#include "fs/paths.h"
#include "fs/sys_calls.h"

#include <QFile>
#include <QSettings>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

std::string userDefaultsPath()
{
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    std::string base = xdg && xdg[0] == '/' ? std::string(xdg) : homeDir() + "/.config";
    return base + "/brondel/brondel.conf";
}

namespace {

// QSettings would block on a FIFO and read a device without end: like every
// configuration file, the store is used only when it is missing or a regular file.
bool storeUsable(const std::string& path)
{
    struct stat st;
    if (sysCalls().stat(path.c_str(), &st) != 0)
        return errno == ENOENT;
    return S_ISREG(st.st_mode) && uint64_t(st.st_size) <= kFileReadCap;
}

} // namespace

std::optional<std::string> userDefaultsString(const std::string& key)
{
    if (!storeUsable(userDefaultsPath()))
        return std::nullopt;
    QSettings store(QFile::decodeName(userDefaultsPath().c_str()), QSettings::IniFormat);
    QVariant value = store.value(QString::fromStdString(key));
    if (!value.isValid())
        return std::nullopt;
    return value.toString().toStdString();
}

void userDefaultsSetString(const std::string& key, const std::string& value)
{
    if (!storeUsable(userDefaultsPath()))
        return;
    QSettings store(QFile::decodeName(userDefaultsPath().c_str()), QSettings::IniFormat);
    store.setValue(QString::fromStdString(key), QString::fromStdString(value));
    store.sync();
}
