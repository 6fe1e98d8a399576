#pragma once

#include "ui/RolloverButton.h"

// A button of the strip: the pictures of a rollover button with a caption small enough for it.
// Sinks a little while it is pressed. Main thread only.
class TouchBarButton : public RolloverButton
{
    Q_OBJECT

public:
    using RolloverButton::RolloverButton;

    // In points; 0 when none is shown.
    [[nodiscard]] double captionWidth() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QFont captionFont() const;
    [[nodiscard]] QColor captionColor() const;
    void paintCaption(QPainter &painter) const;
};
