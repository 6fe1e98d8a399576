#include "ui/BezierPathQuartzUtilities.h"

std::optional<QPainterPath> quartzPath(const QPainterPath &path)
{
    if (path.elementCount() < 1)
        return std::nullopt;
    QPainterPath result = path;
    result.closeSubpath(); // which leaves a figure that is closed as it is
    return result;
}
