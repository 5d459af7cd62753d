#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace fernhollow {

/// The identifier under which the backend stores this machine's counts.
///
/// It is a random UUID, kept in the settings and in a file beside the counts. If it were lost with one of
/// them, all counts would be sent a second time under a new one. Both places also keep a keyed hash of the
/// machine's id (machine-id(5)), so that another machine, which got them with a copied home, takes a new
/// identity. The databases in the folder belong to one identity at a time; those of other identities have
/// other names there. Owned by AppModel; main thread only.
class DeviceIdentity {
public:
    /// `machine` is the result of machineMark(). If it is empty, every identity counts as this machine's.
    explicit DeviceIdentity(std::string machine = machineMark());

    const std::string& id() const { return id_; }

    /// Puts away databases that belong to another identity, takes back this one's, and stores the
    /// identity beside them. Call it before a database is opened. Throws
    /// std::filesystem::filesystem_error when the databases may not be used yet.
    void claimDatabases();

    /// Takes a new identity. The databases stay with the old one: claimDatabases() puts them away.
    void renew();

    /// A keyed hash of this machine's id, from which the id cannot be recovered; empty when the system has no
    /// id.
    static std::string machineMark();

private:
    /// The contents of the file beside the counts.
    struct Record {
        std::string owner;                           // the identity whose databases have the plain names
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
    bool isRenewed_ = false;               // in this run, so the stored identity does not count
    bool areDatabasesOfAnyMachine_ = true; // databases without a record count as this identity's
};

} // namespace fernhollow
