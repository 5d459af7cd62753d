#pragma once

#include <stdexcept>

namespace fernhollow {

/// Why a check, a download or an installation failed. what() is one sentence for the person.
class UpdateError : public std::runtime_error {
public:
    enum class Reason {
        noUpdate,  ///< the feed offers nothing newer that fits this machine
        feed,      ///< there is no feed, or it cannot be read, or an entry is not signed correctly
        download,  ///< the file did not arrive, or differs from the feed's description
        signature, ///< the file is not what its maker signed
        install,   ///< the file could not be installed; the old program is untouched
        cancelled, ///< the person cancelled it, or the program ended
    };

    UpdateError(Reason reason, const std::string& description)
        : std::runtime_error(description), reason_(reason) {}

    Reason reason() const { return reason_; }

private:
    Reason reason_;
};

} // namespace fernhollow
