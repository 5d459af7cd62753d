#pragma once

#include <cstdint>
#include <map>
#include <string>

struct wl_proxy;
struct wl_registry;

namespace fernhollow {

/// The windows of all applications by `zwlr_foreign_toplevel_manager_v1`, which compositors built on wlroots
/// offer. Of each window it keeps the application's identifier and whether it is active. Titles arrive too;
/// they are not looked at. Owned by WaylandDisplay.
class ForeignToplevels {
public:
    static constexpr const char* interfaceName = "zwlr_foreign_toplevel_manager_v1";

    /// `name` is the global's in the registry.
    ForeignToplevels(wl_registry* registry, std::uint32_t name);
    ForeignToplevels(const ForeignToplevels&) = delete;
    ForeignToplevels& operator=(const ForeignToplevels&) = delete;
    ~ForeignToplevels();

    /// The identifier of the active window's application, as of the last complete report; empty while no
    /// window is active.
    std::string activeApplication() const;

private:
    struct Window {
        std::string application;
        bool isActive = false;
        // The two as of the last `done`: in between they may not fit together.
        std::string reportedApplication;
        bool reportedActive = false;
    };
    struct Events;

    wl_proxy* manager_ = nullptr;
    std::map<wl_proxy*, Window> windows_;
};

} // namespace fernhollow
