#include "config/user_defaults.h"

#include "fs/paths.h"

#include <QFile>
#include <QSettings>
#include <cstdlib>

std::string userDefaultsPath()
{
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    std::string base = xdg && xdg[0] == '/' ? std::string(xdg) : homeDir() + "/.config";
    return base + "/brondel/brondel.conf";
}

std::optional<std::string> userDefaultsString(const std::string& key)
{
    QSettings store(QFile::decodeName(userDefaultsPath().c_str()), QSettings::IniFormat);
    QVariant value = store.value(QString::fromStdString(key));
    if (!value.isValid())
        return std::nullopt;
    return value.toString().toStdString();
}

void userDefaultsSetString(const std::string& key, const std::string& value)
{
    QSettings store(QFile::decodeName(userDefaultsPath().c_str()), QSettings::IniFormat);
    store.setValue(QString::fromStdString(key), QString::fromStdString(value));
    store.sync();
}
