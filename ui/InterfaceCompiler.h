#pragma once

#include "ui/InterfaceFile.h"

#include <variant>

class QIODevice;

// Reads an interface file as Qt Designer writes it, while the program is built. It understands what
// such a file says about widgets inside widgets, their properties and their tab order; layouts and
// connections are left out. Any thread.
class InterfaceCompiler
{
public:
    // From a device that is open; or why there is nothing to read, in English, with the line.
    [[nodiscard]] static std::variant<InterfaceFile, QString> read(QIODevice &device);
};
