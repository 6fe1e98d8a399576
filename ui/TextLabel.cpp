#include "ui/TextLabel.h"

#include "ui/Typography.h"

#include <QAccessible>
#include <QPainter>
#include <QTextLayout>

namespace {

// The lines of the text in that width, without an end.
QStringList broken(const QString &text, const QFont &font, int width, bool wraps)
{
    QStringList lines;
    const auto paragraphs = text.split(QLatin1Char('\n'));
    for (const QString &paragraph : paragraphs) {
        QTextLayout layout(paragraph, font);
        QTextOption option;
        option.setWrapMode(wraps ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::NoWrap);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            lines += paragraph.mid(line.textStart(), line.textLength()).trimmed();
        }
        layout.endLayout();
    }
    return lines;
}

} // namespace

TextLabel::TextLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setFont(Typography::text(13));
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, QColor::fromRgb(Palette::Text));
    setPalette(colors);
}

void TextLabel::setStringValue(const QString &newText)
{
    if (newText == text())
        return;
    setText(newText);
    if (m_announcesChanges)
        announce();
}

void TextLabel::setUsesSingleLineMode(bool usesSingleLineMode)
{
    setWordWrap(!usesSingleLineMode);
    update();
}

QStringList TextLabel::shownLines() const
{
    const QFontMetrics metrics(font());
    const int room = usesSingleLineMode() ? 1 : std::max(1, height() / metrics.lineSpacing());
    QStringList lines = broken(text(), font(), width(), wraps());
    const bool isCut = lines.size() > room;
    if (isCut) {
        const QString rest = lines.mid(room - 1).join(QLatin1Char(' '));
        lines = lines.first(room - 1);
        lines += rest;
    }
    if (!lines.isEmpty())
        lines.last() = metrics.elidedText(lines.last(), Qt::ElideRight, width());
    return lines;
}

void TextLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::WindowText));
    const QFontMetrics metrics(font());
    const QStringList lines = shownLines();
    const int textHeight = int(lines.size()) * metrics.lineSpacing();
    int y = (alignment() & Qt::AlignVCenter) ? (height() - textHeight) / 2 : 0;
    if (alignment() & Qt::AlignBottom)
        y = height() - textHeight;
    const Qt::Alignment horizontal = alignment() & Qt::AlignHorizontal_Mask;
    for (const QString &line : lines) {
        painter.drawText(QRect(0, y, width(), metrics.lineSpacing()),
                         int(horizontal | Qt::AlignVCenter | Qt::TextSingleLine), line);
        y += metrics.lineSpacing();
    }
}

void TextLabel::announce()
{
    for (const QAccessible::Event type : {QAccessible::NameChanged, QAccessible::Alert}) {
        QAccessibleEvent event(this, type);
        QAccessible::updateAccessibility(&event);
    }
}
