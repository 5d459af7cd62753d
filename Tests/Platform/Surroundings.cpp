#include "Platform/Surroundings.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace fernhollow::test {
namespace fs = std::filesystem;

Surroundings::Surroundings() {
    std::string folder = (fs::temp_directory_path() / "fernhollow-XXXXXX").native();
    if (::mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    home_ = folder;
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_DATA_HOME",
                                 "XDG_DATA_DIRS", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        save(variable);
        ::unsetenv(variable);
    }
    save("HOME");
    ::setenv("HOME", home_.c_str(), 1);
}

Surroundings::~Surroundings() {
    for (const Saved& saved : saved_) {
        saved.present ? ::setenv(saved.variable.c_str(), saved.value.c_str(), 1)
                      : ::unsetenv(saved.variable.c_str());
    }
    std::error_code ignored;
    fs::remove_all(home_, ignored);
}

void Surroundings::save(const char* variable) {
    const char* value = std::getenv(variable);
    saved_.push_back({variable, value != nullptr, value != nullptr ? value : ""});
}

void Surroundings::set(const char* variable, const std::string& value) {
    ::setenv(variable, value.c_str(), 1);
}

fs::path Surroundings::write(const fs::path& below, std::string_view text) const {
    const fs::path path = home_ / below;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

int Surroundings::logged(std::string_view text) const {
    std::ifstream log(home_ / "fernhollow_debug.log");
    int count = 0;
    for (std::string line; std::getline(log, line);) {
        count += line.find(text) != std::string::npos ? 1 : 0;
    }
    return count;
}

bool eventually(const std::function<bool()>& condition) {
    const QDeadlineTimer deadline(20'000);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents();
        QThread::usleep(200);
    }
    return true;
}

void settle() {
    for (int turn = 0; turn < 50; ++turn) {
        QCoreApplication::processEvents();
        QThread::msleep(2);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace fernhollow::test
