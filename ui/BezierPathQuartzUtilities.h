#pragma once

#include <QPainterPath>

#include <optional>

// The path as a layer draws it: the same figures, the last one closed if it was open. Nothing for
// an empty path.
[[nodiscard]] std::optional<QPainterPath> quartzPath(const QPainterPath &path);
