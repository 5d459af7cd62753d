#include "Keytap/Sessions.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <sys/epoll.h>
#include <system_error>

namespace fernhollow::keytap {
namespace {

constexpr auto login = "org.freedesktop.login1";
constexpr auto sessionInterface = "org.freedesktop.login1.Session";

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

/// The entries of a list that `read` has sd-login allocate.
std::vector<std::string> listed(auto&& read) {
    char** list = nullptr;
    read(&list);
    std::vector<std::string> entries;
    for (char** entry = list; entry && *entry; ++entry) {
        entries.emplace_back(*entry);
        std::free(*entry);
    }
    std::free(static_cast<void*>(list));
    return entries;
}

/// True for a person's local session; false for a remote one, a login screen or a separate lock screen.
bool isOfPerson(const std::string& session) {
    char* kind = nullptr;
    const Text owner(sd_session_get_class(session.c_str(), &kind) < 0 ? nullptr : kind);
    return owner && std::string_view(owner.get()).starts_with("user") &&
           sd_session_is_remote(session.c_str()) <= 0;
}

} // namespace

Sessions::Sessions(Poller& poller, Changed changed) : poller_(poller), changed_(std::move(changed)) {
    sd_login_monitor* monitor = nullptr;
    if (const int result = sd_login_monitor_new("seat", &monitor); result < 0) {
        throw std::system_error(-result, std::generic_category(), "logind's seats cannot be watched");
    }
    monitor_.reset(monitor);
    poller_.watch(sd_login_monitor_get_fd(monitor), EPOLLIN, [this] {
        sd_login_monitor_flush(monitor_.get());
        refresh();
    });
    connect();
    sittings_ = read();
    changed_(sittings_);
}

Sessions::~Sessions() {
    disconnect();
    poller_.drop(sd_login_monitor_get_fd(monitor_.get()));
}

void Sessions::refresh() {
    auto sittings = read();
    // Locks of sessions that left the front are dropped, so that logind is asked again when they return.
    std::erase_if(locks_, [&](const auto& lock) {
        return std::ranges::none_of(sittings,
                                    [&](const auto& s) { return s.isActive && s.session == lock.first; });
    });
    if (sittings != sittings_) {
        sittings_ = std::move(sittings);
        changed_(sittings_);
    }
}

std::vector<Sitting> Sessions::read() {
    std::vector<Sitting> sittings;
    for (const auto& seat : listed([](char*** list) { sd_get_seats(list); })) {
        char* active = nullptr;
        const Text front(sd_seat_get_active(seat.c_str(), &active, nullptr) < 0 ? nullptr : active);
        const auto sessions =
            listed([&](char*** list) { sd_seat_get_sessions(seat.c_str(), list, nullptr, nullptr); });
        for (const auto& session : sessions) {
            uid_t user = 0;
            if (!isOfPerson(session) || sd_session_get_uid(session.c_str(), &user) < 0) {
                continue;
            }
            const bool isActive = front && session == front.get();
            sittings.push_back({seat, session, user, isActive, isActive && isLocked(session)});
        }
    }
    return sittings;
}

bool Sessions::isLocked(const std::string& session) {
    if (!bus_) {
        return false;
    }
    const auto [known, isNew] = locks_.try_emplace(session, true);
    if (isNew) {
        askWhetherLocked(session);
    }
    return known->second;
}

void Sessions::connect() {
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) < 0) {
        return;
    }
    bus_.reset(bus);
    poller_.watch(sd_bus_get_fd(bus), EPOLLIN, [this] { processBus(); });
    // The rule names the sender, because only logind itself may report this.
    constexpr auto rule = "type='signal',sender='org.freedesktop.login1',member='PropertiesChanged',"
                          "path_namespace='/org/freedesktop/login1/session'";
    sd_bus_add_match_async(bus, nullptr, rule, propertiesChanged, nullptr, this);
    processBus();
}

void Sessions::disconnect() {
    if (bus_) {
        poller_.drop(sd_bus_get_fd(bus_.get()));
        bus_.reset();
        locks_.clear();
    }
}

void Sessions::processBus() {
    int result = 0;
    do {
        result = sd_bus_process(bus_.get(), nullptr);
    } while (result > 0);
    if (result < 0) {
        disconnect();
        refresh();
        return;
    }
    const int wanted = sd_bus_get_events(bus_.get());
    poller_.change(sd_bus_get_fd(bus_.get()), wanted < 0 ? EPOLLIN : static_cast<std::uint32_t>(wanted));
}

void Sessions::askWhetherLocked(const std::string& session) {
    char* encoded = nullptr;
    if (sd_bus_path_encode("/org/freedesktop/login1/session", session.c_str(), &encoded) < 0) {
        return;
    }
    const Text path(encoded);
    auto question = std::make_unique<Question>(this, session);
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_method_async(bus_.get(), &slot, login, path.get(),
                                                "org.freedesktop.DBus.Properties", "Get", lockedHintArrived,
                                                question.get(), "ss", sessionInterface, "LockedHint");
    if (result < 0) {
        locks_[session] = false;
        return;
    }
    // The slot owns the question, and the bus owns the slot.
    sd_bus_slot_set_destroy_callback(slot, [](void* owned) { delete static_cast<Question*>(owned); });
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
    [[maybe_unused]] const auto* owned = question.release();
}

int Sessions::propertiesChanged(sd_bus_message*, void* self, sd_bus_error*) {
    // The signal is rare, so any property asks logind again. Until it answers, the last answer holds.
    auto* sessions = static_cast<Sessions*>(self);
    for (const auto& lock : sessions->locks_) {
        sessions->askWhetherLocked(lock.first);
    }
    return 0;
}

int Sessions::lockedHintArrived(sd_bus_message* message, void* question, sd_bus_error*) {
    const auto* about = static_cast<Question*>(question);
    int isLocked = 0;
    // logind answers with an error when it does not know.
    const bool isKnown = !sd_bus_message_is_method_error(message, nullptr) &&
                         sd_bus_message_read(message, "v", "b", &isLocked) >= 0;
    about->sessions->locks_[about->session] = isKnown && isLocked;
    about->sessions->refresh();
    return 0;
}

} // namespace fernhollow::keytap
