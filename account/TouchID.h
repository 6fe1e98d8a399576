#pragma once

// The player's choice to log in with a finger, as far as the user interface asks for it: without
// the settings and all else that LocalAuthenticationHandler, which is one, brings along. Main
// thread only.
class TouchID
{
public:
    virtual ~TouchID() = default;

    // Whether fingers can be read now; why not is logged each time.
    [[nodiscard]] virtual bool canEvaluatePolicy() const = 0;
    [[nodiscard]] virtual bool isTouchIDEnabled() const = 0;
    virtual void setHasAskedUserForTouchID(bool hasAsked) = 0;
};
