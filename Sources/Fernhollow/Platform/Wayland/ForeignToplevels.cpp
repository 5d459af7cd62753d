#include "Platform/Wayland/ForeignToplevels.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <wayland-client.h>

namespace fernhollow {
namespace {

// The protocol's interfaces, version 1, as wayland-scanner would write them. Debian 12 has no package with
// its description. What this program never calls is here only because a request's position is its number.
std::array<const wl_interface*, 5> noTypes{};
std::array<const wl_interface*, 1> seatTypes{&wl_seat_interface};
std::array<const wl_interface*, 1> outputTypes{&wl_output_interface};
std::array<const wl_interface*, 5> rectangleTypes{&wl_surface_interface};

const std::array<wl_message, 8> windowRequests{{{"set_maximized", "", noTypes.data()},
                                                {"unset_maximized", "", noTypes.data()},
                                                {"set_minimized", "", noTypes.data()},
                                                {"unset_minimized", "", noTypes.data()},
                                                {"activate", "o", seatTypes.data()},
                                                {"close", "", noTypes.data()},
                                                {"set_rectangle", "oiiii", rectangleTypes.data()},
                                                {"destroy", "", noTypes.data()}}};
constexpr std::uint32_t destroyRequest = 7;

const std::array<wl_message, 7> windowEvents{{{"title", "s", noTypes.data()},
                                              {"app_id", "s", noTypes.data()},
                                              {"output_enter", "o", outputTypes.data()},
                                              {"output_leave", "o", outputTypes.data()},
                                              {"state", "a", noTypes.data()},
                                              {"done", "", noTypes.data()},
                                              {"closed", "", noTypes.data()}}};
const wl_interface windowInterface{"zwlr_foreign_toplevel_handle_v1",       1,
                                   static_cast<int>(windowRequests.size()), windowRequests.data(),
                                   static_cast<int>(windowEvents.size()),   windowEvents.data()};

std::array<const wl_interface*, 1> windowTypes{&windowInterface};
const std::array<wl_message, 1> managerRequests{{{"stop", "", noTypes.data()}}};
const std::array<wl_message, 2> managerEvents{
    {{"toplevel", "n", windowTypes.data()}, {"finished", "", noTypes.data()}}};
const wl_interface managerInterface{ForeignToplevels::interfaceName,          1,
                                    static_cast<int>(managerRequests.size()), managerRequests.data(),
                                    static_cast<int>(managerEvents.size()),   managerEvents.data()};

constexpr std::uint32_t activated = 2; // of the enumeration `state`

bool isActivated(const wl_array& states) {
    const std::span values(static_cast<const std::uint32_t*>(states.data), states.size / sizeof activated);
    return std::ranges::find(values, activated) != values.end();
}

} // namespace

/// The events in their order, as the library calls them: with ourselves, the sender, and the arguments.
struct ForeignToplevels::Events {
    static Window& windowOf(void* data, wl_proxy* sender) {
        return static_cast<ForeignToplevels*>(data)->windows_[sender];
    }

    static void ignoreText(void* /*data*/, wl_proxy* /*sender*/, const char* /*text*/) {}
    static void ignoreOutput(void* /*data*/, wl_proxy* /*sender*/, wl_output* /*output*/) {}
    static void ignore(void* /*data*/, wl_proxy* /*sender*/) {}

    static void appId(void* data, wl_proxy* sender, const char* identifier) {
        windowOf(data, sender).application = identifier;
    }
    static void state(void* data, wl_proxy* sender, wl_array* states) {
        windowOf(data, sender).isActive = isActivated(*states);
    }
    static void done(void* data, wl_proxy* sender) {
        Window& window = windowOf(data, sender);
        window.reportedApplication = window.application;
        window.reportedActive = window.isActive;
    }
    static void closed(void* data, wl_proxy* sender) {
        static_cast<ForeignToplevels*>(data)->windows_.erase(sender);
        destroy(sender);
    }
    static void toplevel(void* data, wl_proxy* /*sender*/, wl_proxy* window) {
        using Listener = void (*)(void);
        static std::array<Listener, 7> listeners{
            reinterpret_cast<Listener>(&ignoreText),   reinterpret_cast<Listener>(&appId),
            reinterpret_cast<Listener>(&ignoreOutput), reinterpret_cast<Listener>(&ignoreOutput),
            reinterpret_cast<Listener>(&state),        reinterpret_cast<Listener>(&done),
            reinterpret_cast<Listener>(&closed)};
        wl_proxy_add_listener(window, listeners.data(), data);
        static_cast<ForeignToplevels*>(data)->windows_.try_emplace(window);
    }

    static void destroy(wl_proxy* window) {
        wl_proxy_marshal_flags(window, destroyRequest, nullptr, wl_proxy_get_version(window),
                               WL_MARSHAL_FLAG_DESTROY);
    }
};

ForeignToplevels::ForeignToplevels(wl_registry* registry, std::uint32_t name)
    : manager_(static_cast<wl_proxy*>(wl_registry_bind(registry, name, &managerInterface, 1))) {
    using Listener = void (*)(void);
    static std::array<Listener, 2> listeners{reinterpret_cast<Listener>(&Events::toplevel),
                                             reinterpret_cast<Listener>(&Events::ignore)};
    if (manager_ != nullptr) {
        wl_proxy_add_listener(manager_, listeners.data(), this);
    }
}

ForeignToplevels::~ForeignToplevels() {
    for (const auto& [window, facts] : windows_) {
        wl_proxy_destroy(window);
    }
    if (manager_ != nullptr) {
        wl_proxy_destroy(manager_);
    }
}

std::string ForeignToplevels::activeApplication() const {
    const auto active =
        std::ranges::find_if(windows_, [](const auto& entry) { return entry.second.reportedActive; });
    return active == windows_.end() ? std::string() : active->second.reportedApplication;
}

} // namespace fernhollow
