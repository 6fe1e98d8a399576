#pragma once

#include <QString>

#include <functional>

// How a player sees that the launcher waits for a finger, where the system itself shows nothing.
// Called on the main thread only. Nothing in here may destroy the context that calls it.
class BiometricPrompt
{
public:
    virtual ~BiometricPrompt() = default;

    // A question begins. `cancel` ends it as refused; main thread, at any time, also from in here;
    // it does nothing once the question has ended.
    virtual void show(const QString &reason, std::function<void()> cancel) = 0;
    // The reader could not read that finger and waits for another try; `text` says what to do.
    virtual void retry(const QString &text) = 0;
    // The question has ended. Once for each show().
    virtual void hide() = 0;
};
