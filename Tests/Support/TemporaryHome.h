#pragma once

#include <QTemporaryDir>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fernhollow::tests {

/// Sets an environment variable, or removes it, until it leaves scope.
class EnvironmentGuard {
public:
    EnvironmentGuard(std::string name, std::optional<std::string> value) : name_(std::move(name)) {
        if (const char* old = std::getenv(name_.c_str())) {
            old_ = old;
        }
        assign(value);
    }
    ~EnvironmentGuard() { assign(old_); }
    EnvironmentGuard(const EnvironmentGuard&) = delete;
    EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;

private:
    void assign(const std::optional<std::string>& value) {
        if (value) {
            ::setenv(name_.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

    std::string name_;
    std::optional<std::string> old_;
};

inline std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The permission bits of a file, as chmod(2) takes them.
inline unsigned modeOf(const std::filesystem::path& file) {
    return static_cast<unsigned>(std::filesystem::status(file).permissions());
}

/// An empty home folder with nothing of the real user's in it.
class TemporaryHome {
public:
    std::filesystem::path path() const { return folder_.path().toStdString(); }
    std::filesystem::path dataFolder() const { return path() / "data" / "Fernhollow"; }
    std::string log() const { return contents(path() / "fernhollow_debug.log"); }

private:
    QTemporaryDir folder_;
    EnvironmentGuard home_{"HOME", folder_.path().toStdString()};
    EnvironmentGuard data_{"XDG_DATA_HOME", (path() / "data").native()};
    EnvironmentGuard config_{"XDG_CONFIG_HOME", (path() / "config").native()};
    EnvironmentGuard runtime_{"XDG_RUNTIME_DIR", path().native()};
};

} // namespace fernhollow::tests
