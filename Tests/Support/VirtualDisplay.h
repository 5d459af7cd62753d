#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace fernhollow::test {

/// An X server without a screen of its own, for as long as the object lives. It takes the first free
/// display number, so tests can run side by side.
class VirtualDisplay {
public:
    /// Starts Xvfb and waits until it accepts clients. Throws std::runtime_error when it does not.
    explicit VirtualDisplay(const std::vector<std::string>& options = {});
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    ~VirtualDisplay();

    /// What DISPLAY has to be, for example ":3".
    const std::string& name() const { return name_; }

    /// Ends the server now, under its clients' feet. Returns when it is gone.
    void kill();

private:
    void start(const std::vector<std::string>& options, int reportTo);

    std::string name_;
    pid_t server_ = -1;
};

} // namespace fernhollow::test
