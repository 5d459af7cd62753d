#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace fernhollow {

/// Under which identifier this machine's counts are known to the backend.
///
/// A random UUID, kept in the settings and in a file beside the counts, so that the loss of either does not
/// send all counts a second time under another one. Both places say to which machine it belongs, by a keyed
/// hash of the machine's id: on another machine, where they came to with a copied home, there is another
/// identity. The databases in the folder belong to one identity at a time; those of others have names of
/// their own there. Owned by AppModel; main thread only.
class DeviceIdentity {
public:
    /// `machine` is what machineMark() says; where it is empty, every identity passes for this machine's.
    explicit DeviceIdentity(std::string machine = machineMark());

    const std::string& id() const { return id_; }

    /// Makes the databases in the folder this identity's, before any of them is opened, and keeps the
    /// identity beside them. Throws std::filesystem::filesystem_error when they may not be used yet.
    void claimDatabases();

    /// Takes a new identity. The databases stay with the old one: claimDatabases() puts them away.
    void renew();

    /// A mark of this machine that tells no one its id; empty when the system has none.
    static std::string machineMark();

private:
    /// What is kept beside the counts.
    struct Record {
        std::string owner;                           // identity whose databases have the plain names
        std::map<std::string, std::string> machines; // identities by machine
    };

    static std::filesystem::path file();
    static std::optional<Record> read();
    static void write(const Record& record);
    static void putAway(const std::string& owner);
    static void takeBack(const std::string& owner);
    std::string decide(const std::optional<Record>& record);
    void keepInSettings();

    std::string machine_;
    std::string id_;
    bool isRenewed_ = false;               // in this run, whatever is kept elsewhere
    bool areDatabasesOfAnyMachine_ = true; // those without a record are taken for this identity's
};

} // namespace fernhollow
