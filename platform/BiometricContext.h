#pragma once

#include "app/ErrorHandler.h"

#include <functional>
#include <memory>
#include <optional>

class BiometricPrompt;

// Asks the system whether the person at the computer is its owner, by a fingerprint only. Lives on
// the main thread and never makes it wait. Destroying it ends a running question and frees the
// reader, for which it waits half a second at most; the reply of that question then never runs.
class BiometricContext
{
public:
    // Whether it can be asked now. Both others are empty on a system that knows no biometrics.
    struct Evaluability
    {
        bool isPossible = false;
        std::optional<Error> error;         // why not: no reader, no finger, nothing known yet
        std::optional<Exception> exception; // what the system threw instead of an answer
    };

    virtual ~BiometricContext() = default;

    // What was known last. The system is asked when the context is made, and anew whenever its
    // service changes and at each of these calls; a later call tells what it answered.
    // Main thread only.
    [[nodiscard]] virtual Evaluability canEvaluatePolicy() = 0;

    // Shows `reason` to the player and waits for a finger without holding the caller. `reply` runs
    // once, later, on any thread, with whether it was the owner's. A question that cannot be put,
    // that is cancelled, or during which the next one is asked is a false; every false leaves one
    // line in the log that says why. Main thread only.
    virtual void evaluatePolicy(const QString &reason, std::function<void(bool isOwner)> reply) = 0;
};

// What this system offers. The prompt, where there is one, must outlive the context.
std::unique_ptr<BiometricContext> makeBiometricContext(BiometricPrompt *prompt = nullptr);
