#include "ui/AlertPanel.h"

#include "platform/WindowShape.h"
#include "ui/TextField.h"
#include "ui/Typography.h"
#include "ui/WindowShade.h"

#include <QAccessible>
#include <QHideEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {

constexpr int TextWidth = 380;
constexpr int ShadowWidth = 14;
constexpr int Padding = 26;
constexpr double CornerRadius = 10;
constexpr int ButtonRadius = 6;
// A text from a server is cut there, so that the buttons stay on the screen.
constexpr qsizetype LongestText = 600;

QString name(QRgb color) { return QColor::fromRgb(color).name(); }

QString panelStyle()
{
    return QStringLiteral(
               "QLabel { color: %1 }"
               "QLineEdit { background: #0a1113; border: 1px solid %2; border-radius: 4px;"
               " padding: 0 5px }"
               "QLineEdit:focus { border-color: %6 }"
               "QPushButton { color: %3; background: transparent; border: 1px solid %3;"
               " border-radius: %7px; padding: 7px 18px; min-width: 74px }"
               "QPushButton:hover { color: %4; border-color: %4; background: #2a2f26 }"
               "QPushButton:pressed { background: #0d1314 }"
               "QPushButton:default { color: %5; background: %3 }"
               "QPushButton:default:hover { background: %4 }"
               "QPushButton:default:pressed { background: #b98736 }")
        .arg(name(Palette::Text), name(Palette::Mist), name(Palette::Brass), name(Palette::Bright),
             name(Palette::Ink), name(Palette::Teal), QString::number(ButtonRadius));
}

QString shortened(const QString &text)
{
    return text.size() <= LongestText ? text : text.left(LongestText) + QChar(0x2026);
}

// Shows the keyboard by a ring that a dark gap parts from the button: on brass the ring alone would
// differ in nothing but hue.
class PanelButton final : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QPushButton::paintEvent(event);
        if (!hasFocus())
            return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        paintRing(painter, RingWidth, Palette::Peat);
        paintRing(painter, 0, Palette::Teal);
    }

private:
    static constexpr int RingWidth = 2;

    void paintRing(QPainter &painter, int inset, QRgb color) const
    {
        const double middle = inset + RingWidth / 2.0;
        painter.setPen(QPen(QColor::fromRgb(color), RingWidth));
        painter.drawRoundedRect(QRectF(rect()).adjusted(middle, middle, -middle, -middle),
                                ButtonRadius - middle, ButtonRadius - middle);
    }
};

QLabel *makeLabel(const QString &text, const QFont &font)
{
    auto *label = new QLabel(shortened(text));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setFixedWidth(TextWidth);
    label->setFont(font);
    return label;
}

} // namespace

AlertPanel::AlertPanel(const Alert &alert, std::optional<AlertTextField> field, QWidget *owner)
    : QDialog(owner ? owner->window() : nullptr, Qt::Dialog | Qt::FramelessWindowHint),
      m_buttons(alert.buttons.isEmpty() ? QStringList{tr("OK")} : alert.buttons)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowTitle(alert.messageText);
    setAccessibleName(alert.messageText);
    setAccessibleDescription(alert.informativeText);
    setStyleSheet(panelStyle());

    auto *column = new QVBoxLayout(this);
    constexpr int margin = ShadowWidth + Padding;
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSizeConstraint(QLayout::SetFixedSize);
    addTexts(*column, alert);
    if (field)
        addField(*column, alert, *field);
    addButtons(*column);
}

AlertPanel::~AlertPanel() { delete m_shade; }

void AlertPanel::addTexts(QVBoxLayout &column, const Alert &alert)
{
    // Not bold: the bold cut has no letters with accents.
    column.addWidget(makeLabel(alert.messageText, Typography::display(27, QFont::Normal)));
    column.addSpacing(6);
    column.addWidget(makeLabel(alert.informativeText, Typography::text(15)));
}

void AlertPanel::addField(QVBoxLayout &column, const Alert &alert, AlertTextField field)
{
    m_field = new TextField(this);
    m_field->setFixedSize(field.width, field.height);
    m_field->setFont(Typography::text(15));
    m_field->setAccessibleName(alert.messageText);
    column.addSpacing(12);
    column.addWidget(m_field);
    m_field->setFocus();
}

void AlertPanel::addButtons(QVBoxLayout &column)
{
    auto *row = new QHBoxLayout;
    row->setDirection(QBoxLayout::RightToLeft);
    row->setSpacing(10);
    for (qsizetype i = 0; i < m_buttons.size(); ++i) {
        auto *button = new PanelButton(m_buttons.at(i), this);
        button->setFont(Typography::text(15, QFont::Medium));
        button->setCursor(Qt::PointingHandCursor);
        button->setAutoDefault(false);
        button->setDefault(i == 0);
        connect(button, &QPushButton::clicked, this,
                [this, i] { done(AlertPresenter::FirstButtonReturn + int(i)); });
        row->addWidget(button);
        if (i == 0 && !m_field)
            button->setFocus();
    }
    row->addStretch();
    column.addSpacing(22);
    column.addLayout(row);
}

QString AlertPanel::fieldText() const { return m_field ? m_field->stringValue() : QString(); }

void AlertPanel::reject() { done(AlertPresenter::FirstButtonReturn + int(m_buttons.size()) - 1); }

void AlertPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF panel =
        QRectF(rect()).adjusted(ShadowWidth, ShadowWidth, -ShadowWidth, -ShadowWidth);
    for (int i = ShadowWidth; i > 0; --i) {
        painter.setBrush(QColor(2, 5, 6, 8));
        painter.drawRoundedRect(panel.adjusted(-i, -i + 3, i, std::min(i + 3, ShadowWidth)),
                                CornerRadius + i, CornerRadius + i);
    }
    QLinearGradient ground(panel.topLeft(), panel.bottomLeft());
    ground.setColorAt(0, QColor(0x1b, 0x27, 0x25));
    ground.setColorAt(1, QColor(0x0e, 0x15, 0x17));
    painter.setBrush(ground);
    painter.setPen(QPen(QColor(0x5a, 0x6a, 0x64), 1));
    painter.drawRoundedRect(panel.adjusted(0.5, 0.5, -0.5, -0.5), CornerRadius, CornerRadius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0xe0, 0xb2, 0x5b, 90), 1));
    painter.drawRoundedRect(panel.adjusted(4.5, 4.5, -4.5, -4.5), CornerRadius - 4,
                            CornerRadius - 4);
}

void AlertPanel::showEvent(QShowEvent *event)
{
    moveOverOwner();
    cutToShape(*this, *this);
    if (parentWidget() && !m_shade)
        m_shade = new WindowShade(*parentWidget());
    QDialog::showEvent(event);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void AlertPanel::hideEvent(QHideEvent *event)
{
    if (!event->spontaneous())
        delete m_shade;
    QDialog::hideEvent(event);
}

void AlertPanel::moveOverOwner()
{
    adjustSize();
    QRect frame = rect();
    const QWidget *owner = parentWidget();
    frame.moveCenter(owner && owner->isVisible() ? owner->geometry().center()
                                                 : screen()->availableGeometry().center());
    move(frame.topLeft());
}
