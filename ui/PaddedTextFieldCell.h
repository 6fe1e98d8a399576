#pragma once

#include <QRectF>
#include <QResizeEvent>

// Moves the text of a field in from the left, for drawing and editing alike. One implementation
// over every kind of text field; what is asked of Base: TextField's drawingRectForBounds() and the
// text margins and resize event of a line edit.
template<typename Base>
class PaddedTextFieldCell : public Base
{
public:
    using Base::Base;

    // In points; 0 until set.
    [[nodiscard]] double leftPadding() const { return m_leftPadding; }
    void setLeftPadding(double leftPadding)
    {
        m_leftPadding = leftPadding;
        moveText();
    }

    [[nodiscard]] QRectF drawingRectForBounds(const QRectF &bounds) const override
    {
        return Base::drawingRectForBounds(QRectF(bounds.x() + m_leftPadding, bounds.y(),
                                                 bounds.width() - m_leftPadding, bounds.height()));
    }

protected:
    void resizeEvent(QResizeEvent *event) override
    {
        Base::resizeEvent(event);
        moveText();
    }

private:
    void moveText()
    {
        const QRectF bounds = this->rect();
        const QRectF text = drawingRectForBounds(bounds);
        this->setTextMargins(qRound(text.left() - bounds.left()), qRound(text.top() - bounds.top()),
                             qRound(bounds.right() - text.right()),
                             qRound(bounds.bottom() - text.bottom()));
    }

    double m_leftPadding = 0;
};
