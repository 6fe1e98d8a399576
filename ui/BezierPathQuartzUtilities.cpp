#include "ui/BezierPathQuartzUtilities.h"

namespace {

// A path here has no element of its own for closing: a figure is closed when a line has come back
// to where it started.
bool endsWhereItStarted(const QPainterPath::Element &end, const QPointF &start)
{
    return QPointF(end) == start;
}

} // namespace

std::optional<QPainterPath> quartzPath(const QPainterPath &path)
{
    const int count = path.elementCount();
    if (count < 1)
        return std::nullopt;

    QPainterPath result;
    result.setFillRule(path.fillRule());
    QPointF start;
    bool isLastSubpathClosed = true;
    for (int i = 0; i < count; ++i) {
        const QPainterPath::Element element = path.elementAt(i);
        switch (element.type) {
        case QPainterPath::MoveToElement:
            start = element;
            result.moveTo(start);
            break;
        case QPainterPath::LineToElement:
            result.lineTo(element);
            isLastSubpathClosed = endsWhereItStarted(element, start);
            break;
        case QPainterPath::CurveToElement:
            result.cubicTo(element, path.elementAt(i + 1), path.elementAt(i + 2));
            i += 2;
            isLastSubpathClosed = false;
            break;
        case QPainterPath::CurveToDataElement:
            break; // taken together with the curve that it belongs to
        }
    }
    if (!isLastSubpathClosed)
        result.closeSubpath();
    return result;
}
