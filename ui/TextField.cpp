#include "ui/TextField.h"

#include "ui/CustomWindow.h"
#include "ui/Typography.h"

#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace {

// As much as the fields of the interface file have on their left: a text that runs from right to
// left begins there.
constexpr double RightPadding = 12;

TextMovement movementOf(Qt::FocusReason reason)
{
    if (reason == Qt::TabFocusReason)
        return TextMovement::Tab;
    return reason == Qt::BacktabFocusReason ? TextMovement::Backtab : TextMovement::Other;
}

} // namespace

TextField::TextField(QWidget *parent) : QLineEdit(parent)
{
    setFrame(false);
    setAttribute(Qt::WA_MacShowFocusRect, false);
    setFont(Typography::text(15));
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, QColor::fromRgb(Palette::Text));
    colors.setColor(QPalette::PlaceholderText, QColor::fromRgb(Palette::Mist));
    colors.setColor(QPalette::Highlight, QColor(91, 200, 181, 110));
    colors.setColor(QPalette::HighlightedText, Qt::white);
    setPalette(colors);
    connect(this, &QLineEdit::textEdited, this, [this] {
        if (m_delegate)
            m_delegate->controlTextDidChange(this);
    });
}

void TextField::becomeFirstResponder()
{
    setFocus();
    selectAll();
}

QRectF TextField::drawingRectForBounds(const QRectF &bounds) const
{
    return bounds.adjusted(0, 0, -std::min(RightPadding, bounds.width()), 0);
}

void TextField::keyPressEvent(QKeyEvent *event)
{
    QLineEdit::keyPressEvent(event);
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        endEditing(TextMovement::Return);
    else if (event->key() == Qt::Key_Escape)
        endEditing(TextMovement::Cancel);
}

void TextField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    endEditing(movementOf(event->reason()));
}

void TextField::paintEvent(QPaintEvent *event)
{
    if (CustomWindow::drawsTexts(*this))
        QLineEdit::paintEvent(event);
    if (!hasFocus())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor::fromRgb(Palette::Teal), 1.5));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 5, 5);
}

void TextField::endEditing(TextMovement movement)
{
    if (m_delegate)
        m_delegate->controlTextDidEndEditing(this, movement);
}

SecureTextField::SecureTextField(QWidget *parent) : TextField(parent)
{
    setEchoMode(QLineEdit::Password);
    setInputMethodHints(Qt::ImhHiddenText | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText |
                        Qt::ImhNoAutoUppercase);
}
