// The identity that is kept beside the counts: whatever its file holds, there is a UUID to send under, and
// the next start finds the same.

#include "Fuzz.h"
#include "KeypressCore/DailyCountsStore.h"
#include "Model/DeviceIdentity.h"
#include "Support/UserDirectories.h"

#include <QUuid>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fernhollow::fuzz {
namespace {

constexpr const char* machine = "a machine";

/// Where the counts are, in memory; the settings are out of reach.
class Home {
public:
    Home() {
        require(::mkdtemp(folder_.data()) != nullptr, "a folder can be made");
        ::setenv("XDG_DATA_HOME", folder_.c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", "/dev/null", 1);
        createPrivateDirectories(DailyCountsStore::databaseDirectory());
    }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;
    ~Home() { std::filesystem::remove_all(folder_); }

    static void keep(std::string_view text) {
        std::ofstream(DailyCountsStore::databaseDirectory() / "identity.json", std::ios::binary) << text;
    }

private:
    std::string folder_ = "/dev/shm/fernhollow-XXXXXX";
};

} // namespace

void check(std::string_view input) {
    static const Home home;
    Home::keep(input);
    DeviceIdentity identity(machine);
    identity.claimDatabases();
    const QString id = QString::fromStdString(identity.id());
    require(QUuid(id).toString(QUuid::WithoutBraces).compare(id, Qt::CaseInsensitive) == 0, "it is a UUID");
    require(DeviceIdentity(machine).id() == identity.id(), "the next start finds the same identity");
}

} // namespace fernhollow::fuzz
