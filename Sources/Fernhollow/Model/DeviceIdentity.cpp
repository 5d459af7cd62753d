#include "Model/DeviceIdentity.h"

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DatabasePlace.h"
#include "KeypressCore/SentCounts.h"
#include "Model/KeychainStore.h"
#include "Platform/UserDefaults.h"
#include "Support/DebugLog.h"
#include "Support/Text.h"
#include "Support/UserDirectories.h"

#include <QByteArray>
#include <QMessageAuthenticationCode>
#include <QSaveFile>
#include <QString>
#include <QUuid>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

constexpr const char* idAccount = "deviceId";
constexpr const char* machineAccount = "deviceMachine";
constexpr const char* asideReason = "machine-"; // followed by the identity that owns the databases

// Never to be changed: with another key every machine would look like another one.
constexpr const char* markKey = "a3f0c6d2-5b8e-4f1d-9c47-7e2a91d0b6f4";

bool isIdentity(const std::string& text) {
    const QUuid uuid(QString::fromStdString(text));
    constexpr std::size_t length = 36; // QUuid also reads other forms, which the backend may refuse
    return text.size() == length && !uuid.isNull();
}

std::string newIdentity() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

std::optional<std::string> identityIn(const std::optional<std::string>& text, const char* place) {
    if (text && !isIdentity(*text)) {
        debugLog(std::string("[DeviceIdentity] The identity in ") + place + " is not a UUID and is not used");
        return std::nullopt;
    }
    return text;
}

std::vector<fs::path> databases(const std::string& ending) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(DailyCountsStore::databaseDirectory())) {
        const std::string name = entry.path().filename().native();
        if (name.starts_with("keypress") && name.ends_with(ending)) {
            found.push_back(entry.path());
        }
    }
    return found;
}

} // namespace

std::string DeviceIdentity::machineMark() {
    for (const char* place : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
        std::ifstream stream(place);
        const std::string id = trimmed(std::string(std::istreambuf_iterator<char>(stream), {}));
        constexpr std::size_t length = 32; // the file may also contain "uninitialized", which is shorter
        if (id.size() == length) {
            return QMessageAuthenticationCode::hash(QByteArray::fromStdString(id), markKey,
                                                    QCryptographicHash::Sha256)
                .toHex()
                .toStdString();
        }
    }
    return {};
}

DeviceIdentity::DeviceIdentity(std::string machine) : machine_(std::move(machine)) {
    id_ = decide(read());
    keepInSettings();
}

// The identity beside the counts belongs to them, whatever the settings say, because settings are synced
// between machines and restored separately. Settings without a machine were written before machines were
// distinguished.
std::string DeviceIdentity::decide(const std::optional<Record>& record) {
    const auto kept = identityIn(KeychainStore::readString(idAccount), "the settings");
    const auto keptFor = KeychainStore::readString(machineAccount);
    if (record && machine_.empty()) {
        return record->owner;
    }
    if (record) {
        if (const auto mine = record->machines.find(machine_); mine != record->machines.end()) {
            if (kept != mine->second) {
                debugLog("[DeviceIdentity] Adopted the identity kept beside the counts: " + mine->second);
            }
            return mine->second;
        }
        if (kept && keptFor == machine_) {
            return *kept;
        }
        const std::string made = newIdentity();
        debugLog("[DeviceIdentity] The counts in this home were copied from another machine; this one has a "
                 "new identity: " +
                 made);
        return made;
    }
    if (kept && (machine_.empty() || !keptFor || keptFor == machine_)) {
        return *kept;
    }
    const std::string made = newIdentity();
    if (kept) {
        areDatabasesOfAnyMachine_ = false; // they belong to an identity that the settings no longer contain
        debugLog("[DeviceIdentity] The settings were copied from another machine; this one has a new "
                 "identity: " +
                 made);
    }
    return made;
}

void DeviceIdentity::keepInSettings() {
    if (KeychainStore::readString(idAccount) != id_) {
        UserDefaults::setString(KeychainStore::key(idAccount), id_);
    }
    if (!machine_.empty() && KeychainStore::readString(machineAccount) != machine_) {
        UserDefaults::setString(KeychainStore::key(machineAccount), machine_);
    }
}

void DeviceIdentity::renew() {
    const std::string old = std::exchange(id_, newIdentity());
    isRenewed_ = true;
    debugLog("[DeviceIdentity] Another machine uses the identity " + old +
             "; this one has a new identity: " + id_);
    keepInSettings();
}

// Databases that came from another machine, or that belong to an old identity, are put away as a whole, and
// counting begins with empty ones. The identity that counted their days sends them from its own machine. If
// this machine also sent them, under its new identity, the account's total would double. Nor can this machine
// keep using them without sending them: today's row would contain both machines' presses, and nothing could
// separate them later. This way the account's total neither doubles nor loses anything that the backend has.
// Earlier days are shown as the backend knows them. The files are kept under the identity's name and are put
// back if the home returns to its machine.
void DeviceIdentity::claimDatabases() {
    createPrivateDirectories(DailyCountsStore::databaseDirectory());
    auto record = read();
    if (!isRenewed_) {
        id_ = decide(record); // the folder may have become readable only now
        keepInSettings();
    }
    const bool isOwner = record ? record->owner == id_ : areDatabasesOfAnyMachine_;
    if (!isOwner) {
        putAway(record ? record->owner : "unknown");
        takeBack(id_);
    }
    if (isOwner && record && (machine_.empty() || record->machines[machine_] == id_)) {
        return;
    }
    if (!record) {
        record.emplace();
    }
    record->owner = id_;
    if (!machine_.empty()) {
        record->machines[machine_] = id_;
    }
    try {
        write(*record);
    } catch (const fs::filesystem_error& error) {
        if (!isOwner) {
            throw; // without the record the next start would put this identity's own databases away
        }
        debugLog(std::string("[DeviceIdentity] ") + error.what());
    }
    areDatabasesOfAnyMachine_ = true;
}

void DeviceIdentity::putAway(const std::string& owner) {
    for (const fs::path& database : databases(".sqlite")) {
        const auto aside = DatabasePlace::setAside(database, asideReason + owner);
        DatabasePlace::move(SentCounts::fileOf(database), SentCounts::fileOf(aside));
        debugLog("[DeviceIdentity] The counts of another identity are kept as " + aside.native());
    }
}

void DeviceIdentity::takeBack(const std::string& owner) {
    const std::string ending = std::string(".") + asideReason + owner;
    for (const fs::path& aside : databases(ending)) {
        const std::string name = aside.native();
        const fs::path database = name.substr(0, name.size() - ending.size());
        DatabasePlace::move(SentCounts::fileOf(aside), SentCounts::fileOf(database));
        DatabasePlace::move(aside, database);
        debugLog("[DeviceIdentity] The counts of this machine are back from " + name);
    }
}

fs::path DeviceIdentity::file() {
    return DailyCountsStore::databaseDirectory() / "identity.json";
}

auto DeviceIdentity::read() -> std::optional<Record> {
    try {
        const auto json = nlohmann::json::parse(std::ifstream(file()));
        Record record{json.at("owner"), json.at("machines")};
        const auto isBad = [](const auto& machine) { return !isIdentity(machine.second); };
        if (isIdentity(record.owner) && std::ranges::none_of(record.machines, isBad)) {
            return record;
        }
        debugLog("[DeviceIdentity] The identity beside the counts is not a UUID and is not used");
    } catch (const nlohmann::json::exception&) {
        return std::nullopt; // usually the file is missing; then the settings decide
    } catch (const fs::filesystem_error&) {
        return std::nullopt;
    }
    return std::nullopt;
}

void DeviceIdentity::write(const Record& record) {
    const std::string text = nlohmann::json{{"owner", record.owner}, {"machines", record.machines}}.dump(2);
    QSaveFile saved(QString::fromStdString(file().native()));
    const bool isOpen = saved.open(QIODevice::WriteOnly) &&
                        saved.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    if (!isOpen || saved.write(QByteArray::fromStdString(text + "\n")) < 0 || !saved.commit()) {
        throw fs::filesystem_error("cannot keep the identity beside the counts", file(),
                                   std::make_error_code(std::errc::io_error));
    }
}

} // namespace fernhollow
