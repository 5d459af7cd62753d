#pragma once

#include <stdexcept>

namespace fernhollow {

/// Why a check, a download or an installation ended, in one sentence for the person in front of it.
class UpdateError : public std::runtime_error {
public:
    enum class Reason {
        noUpdate,  ///< the feed offers nothing newer that fits this machine
        feed,      ///< no feed, or one that cannot be read or is not signed as it must be
        download,  ///< the file did not come, or not as the feed describes it
        signature, ///< the file is not what its maker signed
        install,   ///< the file could not be put in its place; the old program is untouched
        cancelled, ///< the person, or the end of the program, broke it off
    };

    UpdateError(Reason reason, const std::string& description)
        : std::runtime_error(description), reason_(reason) {}

    Reason reason() const { return reason_; }

private:
    Reason reason_;
};

} // namespace fernhollow
