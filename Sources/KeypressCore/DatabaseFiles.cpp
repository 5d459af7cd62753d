// The static operations of DailyCountsStore: where its files are.

#include "KeypressCore/DailyCountsStore.h"
#include "Support/Text.h"
#include "Support/UserDirectories.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QtEndian>

#include <array>
#include <string>
#include <system_error>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

constexpr std::array<const char*, 2> companions = {"-wal", "-shm"};

fs::path createdDatabaseDirectory() {
    auto folder = DailyCountsStore::databaseDirectory();
    createPrivateDirectories(folder);
    return folder;
}

std::string accountToken(std::string_view email) {
    constexpr qsizetype longestToken = 32;
    return QByteArray::fromStdString(lowercased(email))
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals)
        .left(longestToken)
        .toStdString();
}

QByteArray addressHash(std::string_view email) {
    return QCryptographicHash::hash(QByteArray::fromStdString(lowercased(email)), QCryptographicHash::Sha256);
}

fs::path withSuffix(fs::path file, const char* suffix) {
    return file += suffix;
}

/// The target appears only when it is complete, because half a database would pass for the account's own.
void copyWhole(const fs::path& from, const fs::path& to) {
    const fs::path partial = withSuffix(to, ".partial");
    try {
        fs::copy_file(from, partial, fs::copy_options::overwrite_existing);
        fs::permissions(partial, fs::perms::owner_read | fs::perms::owner_write);
        fs::rename(partial, to);
    } catch (const fs::filesystem_error&) {
        std::error_code ignored;
        fs::remove(partial, ignored);
        throw;
    }
}

} // namespace

fs::path DailyCountsStore::databaseDirectory() {
    return applicationSupportDirectory() / "Fernhollow";
}

fs::path DailyCountsStore::defaultURL() {
    return createdDatabaseDirectory() / "keypress.sqlite";
}

fs::path DailyCountsStore::urlForAccount(std::string_view email) {
    return createdDatabaseDirectory() / ("keypress_" + accountToken(email) + ".sqlite");
}

fs::path DailyCountsStore::longUrlForAccount(std::string_view email) {
    constexpr qsizetype hashLength = 8; // the whole address could make a name longer than a file may have
    return createdDatabaseDirectory() /
           ("keypress_" + accountToken(email) + "_" +
            addressHash(email).left(hashLength).toHex().toStdString() + ".sqlite");
}

std::int32_t DailyCountsStore::ownerMark(std::string_view email) {
    const auto mark = qFromBigEndian<qint32>(addressHash(email).constData());
    return mark != 0 ? mark : 1; // 0 is the mark of a file without an owner
}

bool DailyCountsStore::globalDatabaseExists() {
    try {
        return fs::exists(defaultURL());
    } catch (const fs::filesystem_error&) {
        return false;
    }
}

bool DailyCountsStore::migrateGlobalDataToAccount(std::string_view email) {
    const fs::path global = defaultURL();
    const fs::path account = urlForAccount(email);
    if (!fs::exists(global) || fs::exists(account)) {
        return false;
    }
    copyWhole(global, account);
    std::error_code ignored; // SQLite makes new companions, and an original that stays only takes space
    for (const char* suffix : companions) {
        if (fs::exists(withSuffix(global, suffix), ignored)) {
            fs::copy_file(withSuffix(global, suffix), withSuffix(account, suffix), ignored);
        }
    }
    fs::remove(global, ignored);
    for (const char* suffix : companions) {
        fs::remove(withSuffix(global, suffix), ignored);
    }
    return true;
}

} // namespace fernhollow
