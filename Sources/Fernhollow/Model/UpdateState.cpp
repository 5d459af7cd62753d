#include "Model/UpdateState.h"

#include <array>
#include <charconv>
#include <string_view>

namespace fernhollow {
namespace {

// The shortest digits that stand for this number, with a decimal point even when it is whole.
std::string decimal(double number) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    std::string text(digits.data(), end);
    return text.find_first_not_of("-0123456789") == std::string::npos ? text.append(".0") : text;
}

std::string withText(std::string_view before, const std::string& text) {
    return std::string(before).append("\"").append(text).append("\")");
}

struct Describe {
    std::string operator()(const UpdateIdle& /*state*/) const { return "idle"; }
    std::string operator()(const UpdateChecking& /*state*/) const { return "checking"; }
    std::string operator()(const UpdateAvailable& state) const {
        return withText("updateAvailable(version: ", state.version);
    }
    std::string operator()(const UpdateDownloading& state) const {
        return std::string("downloading(progress: ").append(decimal(state.progress)).append(")");
    }
    std::string operator()(const UpdateReadyToInstall& /*state*/) const { return "readyToInstall"; }
    std::string operator()(const UpdateUpToDate& /*state*/) const { return "upToDate"; }
    std::string operator()(const UpdateFailed& state) const { return withText("error(", state.message); }
};

} // namespace

std::string describe(const UpdateState& state) {
    return std::visit(Describe(), state);
}

} // namespace fernhollow
