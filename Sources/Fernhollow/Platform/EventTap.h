#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace fernhollow {

/// What a tap reports. Which key it was is not among it: nothing behind the tap can know.
enum class TapEvent {
    keyDown,  ///< a key other than a modifier went down, or repeated
    disabled, ///< the desktop took the tap away; it delivers nothing any more
};

/// A global listener for key-down events of every application, each auto-repeat included.
///
/// Key-ups and modifier keys alone are never reported. Events arrive on the thread that created
/// the tap, from its event loop, and only while the tap is enabled. Destroying it removes it.
class EventTap {
public:
    virtual ~EventTap() = default;
    virtual void setEnabled(bool enabled) = 0;
};

/// What a person may do about a TrustProblem with one press of a button.
struct TrustAction {
    std::string label;             ///< of the button
    std::function<void()> perform; ///< returns at once; what comes of it, the provider's next answers tell
};

/// Why the desktop does not let us count, in words for the person in front of it.
struct TrustProblem {
    std::string missing;                 ///< what is missing, one sentence
    std::string remedy;                  ///< what the person can do, one or two sentences
    std::optional<TrustAction> action{}; ///< absent where the program can do nothing
};

/// The desktop's side of the keyboard: may we observe it, and the tap that does.
class EventTapProvider {
public:
    /// Shows the person why counting is not possible.
    using Prompt = std::function<void(const TrustProblem&)>;
    using Callback = std::function<void(TapEvent)>;

    virtual ~EventTapProvider() = default;

    /// True when a tap would see every press. Never waits: a provider that has to ask another process says
    /// false until it knows. It is asked again each second. With `prompting`, the refusal is also shown to
    /// the person as soon as it is known.
    virtual bool isProcessTrusted(bool prompting) = 0;

    /// A new, disabled tap, or null when the desktop refuses one.
    virtual std::unique_ptr<EventTap> createTap(Callback callback) = 0;
};

} // namespace fernhollow
