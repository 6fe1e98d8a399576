#pragma once

#include "app/ErrorHandler.h"

#include <functional>
#include <memory>
#include <optional>

// Asks the system whether the person at the computer is its owner, by a fingerprint only.
class BiometricContext
{
public:
    // Whether it can be asked now. Both others are empty on a system that knows no biometrics.
    struct Evaluability
    {
        bool isPossible = false;
        std::optional<Error> error;         // why not: no reader, no finger enrolled
        std::optional<Exception> exception; // what the system threw instead of an answer
    };

    virtual ~BiometricContext() = default;

    // Main thread only.
    [[nodiscard]] virtual Evaluability canEvaluatePolicy() = 0;

    // Shows `reason` to the player and waits for a finger without holding the caller. `reply` runs
    // once, on any thread, with whether it was the owner's; a cancelled question is a false.
    // Main thread only.
    virtual void evaluatePolicy(const QString &reason, std::function<void(bool isOwner)> reply) = 0;
};

// What this system offers.
std::unique_ptr<BiometricContext> makeBiometricContext();
