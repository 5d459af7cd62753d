#include "Platform/UserDefaults.h"

#include "Support/ApplicationIdentity.h"
#include "Support/DebugLog.h"
#include "Support/UserDirectories.h"

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <filesystem>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

fs::path file() {
    return configurationDirectory() / std::string(applicationName) /
           (std::string(applicationIdentifier) + ".conf");
}

template<class Use>
void write(Use use) {
    try {
        const fs::path path = file();
        createPrivateDirectories(path.parent_path());
        QSettings settings(QString::fromStdString(path.native()), QSettings::IniFormat);
        use(settings);
        settings.sync();
        if (settings.status() != QSettings::NoError) {
            debugLog("[UserDefaults] Cannot write " + path.native());
        }
    } catch (const fs::filesystem_error& error) {
        debugLog(std::string("[UserDefaults] Cannot write preferences: ") + error.what());
    }
}

QVariant read(const std::string& key) {
    try {
        const QSettings settings(QString::fromStdString(file().native()), QSettings::IniFormat);
        return settings.value(QString::fromStdString(key));
    } catch (const fs::filesystem_error& error) {
        debugLog(std::string("[UserDefaults] Cannot read preferences: ") + error.what());
        return {};
    }
}

} // namespace

std::optional<std::string> UserDefaults::string(const std::string& key) {
    const QVariant value = read(key);
    return value.userType() == QMetaType::QString ? std::optional(value.toString().toStdString())
                                                  : std::nullopt;
}

std::optional<std::string> UserDefaults::data(const std::string& key) {
    const QVariant value = read(key);
    return value.userType() == QMetaType::QByteArray ? std::optional(value.toByteArray().toStdString())
                                                     : std::nullopt;
}

void UserDefaults::setString(const std::string& key, const std::string& value) {
    write([&](QSettings& settings) {
        settings.setValue(QString::fromStdString(key), QString::fromStdString(value));
    });
}

void UserDefaults::setData(const std::string& key, const std::string& value) {
    write([&](QSettings& settings) {
        settings.setValue(QString::fromStdString(key), QByteArray::fromStdString(value));
    });
}

void UserDefaults::remove(const std::string& key) {
    write([&](QSettings& settings) { settings.remove(QString::fromStdString(key)); });
}

} // namespace fernhollow
