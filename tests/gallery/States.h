#pragma once

#include "Scene.h"

#include <functional>
#include <map>

// What players meet, by the name of the picture.
struct State
{
    Setting setting;
    std::function<void(Scene &)> arrange;
};
[[nodiscard]] const std::map<std::string, State> &states();

// Close looks at the controls under the mouse, held down and with the keyboard.
void lookAtControls(Scene &scene);
void lookAtStrip(Scene &scene);
void lookAtAlert(Scene &scene);
void openMenu(Scene &scene);
