#include "ui/TextLabel.h"

#include "ui/Accessibility.h"
#include "ui/CustomWindow.h"
#include "ui/Typography.h"

#include <QPainter>
#include <QTextLayout>

namespace {

using namespace std::chrono_literals;

// So that a screen reader gets to say something between two of them.
constexpr auto PauseBetweenAnnouncements = 1500ms;

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

// As much of the line as has room, without a part of a word unless that were half of it.
QString cut(const QString &line, const QFont &font, int width)
{
    QString elided = QFontMetrics(font).elidedText(line, Qt::ElideRight, width);
    const qsizetype space = elided.lastIndexOf(QLatin1Char(' '));
    if (elided == line || space < elided.size() / 2)
        return elided;
    return elided.first(space) + QChar(0x2026);
}

} // namespace

TextLabel::TextLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setStyle(Message);
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &TextLabel::announceNews);
}

void TextLabel::setStyle(Style style)
{
    m_style = style;
    setFont(style == Message ? Typography::text(15) : Typography::text(12));
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText,
                    QColor::fromRgb(style == Message ? Palette::Text : Palette::Mist));
    setPalette(colors);
}

void TextLabel::setStringValue(const QString &newText)
{
    if (newText == text())
        return;
    setText(newText);
    emit stringValueChanged(newText);
    if (m_announcesChanges && !m_pause.isActive())
        announceNews();
}

// A text may change thousands of times a second, so whether it is cut is found out when it matters.
bool TextLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip)
        // A tool tip takes what looks like markup for markup.
        setToolTip(isCut() ? text().toHtmlEscaped() : QString());
    return QLabel::event(event);
}

void TextLabel::setUsesSingleLineMode(bool usesSingleLineMode)
{
    setWordWrap(!usesSingleLineMode);
    update();
}

int TextLabel::room() const
{
    return usesSingleLineMode() ? 1 : std::max(1, height() / QFontMetrics(font()).lineSpacing());
}

bool TextLabel::isCut() const { return broken(text(), font(), width(), wraps()).size() > room(); }

QStringList TextLabel::shownLines() const
{
    QStringList lines = broken(text(), font(), width(), wraps());
    if (lines.size() > room()) {
        const QString rest = lines.mid(room() - 1).join(QLatin1Char(' '));
        lines = lines.first(room() - 1);
        lines += rest;
    }
    if (!lines.isEmpty())
        lines.last() = cut(lines.last(), font(), width());
    return lines;
}

void TextLabel::paintEvent(QPaintEvent *)
{
    if (!CustomWindow::drawsTexts(*this))
        return;
    const QStringList lines = shownLines();
    QPainter painter(this);
    painter.setFont(font());
    // A text from a server runs in the direction of its script, whatever the window's is.
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    // A dark rim, because the text stands on a picture.
    painter.setPen(QColor(5, 9, 10, 150));
    for (const QPoint offset : {QPoint(0, 1), QPoint(1, 0), QPoint(-1, 0), QPoint(0, -1)})
        paintLines(painter, lines, rect().translated(offset));
    painter.setPen(palette().color(QPalette::WindowText));
    paintLines(painter, lines, rect());
}

void TextLabel::paintLines(QPainter &painter, const QStringList &lines, const QRect &area) const
{
    const int lineHeight = QFontMetrics(font()).lineSpacing();
    const int rest = height() - int(lines.size()) * lineHeight;
    int y = area.y();
    if (alignment() & Qt::AlignBottom)
        y += rest;
    else if (alignment() & Qt::AlignVCenter)
        y += rest / 2;
    const Qt::Alignment horizontal = alignment() & Qt::AlignHorizontal_Mask;
    for (const QString &line : lines) {
        painter.drawText(QRect(area.x(), y, area.width(), lineHeight),
                         int(horizontal | Qt::AlignVCenter | Qt::TextSingleLine), line);
        y += lineHeight;
    }
}

void TextLabel::setAnnouncesChanges(bool announcesChanges)
{
    m_announcesChanges = announcesChanges;
    if (announcesChanges)
        Accessibility::makeSpoken(*this);
}

void TextLabel::announceNews()
{
    const QString headline = text().section(QLatin1Char('\n'), 0, 0);
    if (headline == m_announcedHeadline)
        return;
    m_announcedHeadline = headline;
    m_pause.start(PauseBetweenAnnouncements);
    Accessibility::speak(*this);
    emit announced(text());
}
