#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace fernhollow {

/// What a tap reports. It does not say which key it was, so no code behind the tap can know.
enum class TapEvent {
    keyDown,  ///< a key other than a modifier went down, or repeated
    disabled, ///< the desktop ended the tap, which reports nothing any more
};

/// A global listener for key-down events in every application, including each auto-repeat.
///
/// Key-ups and modifier keys alone are never reported. Events arrive on the thread that created
/// the tap, from its event loop, and only while the tap is enabled. Destroying it removes it.
class EventTap {
public:
    virtual ~EventTap() = default;
    /// Starts or stops the events.
    virtual void setEnabled(bool enabled) = 0;
};

/// What a person may do about a TrustProblem with one press of a button.
struct TrustAction {
    std::string label;             ///< the button's text
    std::function<void()> perform; ///< returns at once; the provider's next answers show the outcome
};

/// Why the desktop does not let us count, in sentences for the person.
struct TrustProblem {
    std::string missing;                 ///< what is missing, one sentence
    std::string remedy;                  ///< what the person can do, one or two sentences
    std::optional<TrustAction> action{}; ///< absent when the program can do nothing about it
};

/// Says whether the desktop lets us observe the keyboard, and makes the tap that does.
class EventTapProvider {
public:
    /// Shows the person why counting is not possible.
    using Prompt = std::function<void(const TrustProblem&)>;
    using Callback = std::function<void(TapEvent)>;

    virtual ~EventTapProvider() = default;

    /// True when a tap would see every press. It never waits: a provider that has to ask another process
    /// returns false until it knows. The caller asks again each second. With `prompting`, a refusal is
    /// also shown to the person as soon as it is known.
    virtual bool isProcessTrusted(bool prompting) = 0;

    /// A new, disabled tap, or null when the desktop refuses one.
    virtual std::unique_ptr<EventTap> createTap(Callback callback) = 0;
};

} // namespace fernhollow
