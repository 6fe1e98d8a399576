#pragma once

#include <QLabel>
#include <QTimer>

class TextFieldDelegate;

// A line, or several, of plain text in a fixed place: what comes from a server is never taken for
// markup, and what does not fit ends in an ellipsis and is whole in the tool tip. Changes are told
// to assistive technology. Main thread only.
class TextLabel : public QLabel
{
    Q_OBJECT
    Q_PROPERTY(Style style READ style WRITE setStyle)
    Q_PROPERTY(bool announcesChanges READ announcesChanges WRITE setAnnouncesChanges)

public:
    enum Style {
        Message, // what the player has to read
        Note     // what is good to know
    };
    Q_ENUM(Style)

    explicit TextLabel(QWidget *parent = nullptr);

    void setStyle(Style style);
    [[nodiscard]] Style style() const { return m_style; }

    void setStringValue(const QString &text);
    [[nodiscard]] QString stringValue() const { return text(); }

    // One line only, or as many as there is room for.
    void setUsesSingleLineMode(bool usesSingleLineMode);
    [[nodiscard]] bool usesSingleLineMode() const { return !wordWrap(); }
    // Whether long lines go on in the next one.
    void setWraps(bool wraps) { setWordWrap(wraps); }
    [[nodiscard]] bool wraps() const { return wordWrap(); }
    // Whether a text that is too long can be moved along. It never can here; kept as state.
    void setScrollable(bool isScrollable) { m_isScrollable = isScrollable; }
    [[nodiscard]] bool isScrollable() const { return m_isScrollable; }

    // Labels are not edited, so their delegate hears nothing; null for none.
    void setDelegate(TextFieldDelegate *delegate) { m_delegate = delegate; }
    [[nodiscard]] TextFieldDelegate *delegate() const { return m_delegate; }

    // Whether assistive technology reads out a text whose first line is new: at once, or after the
    // pause that follows each reading. The further lines are details, which may change many times a
    // second.
    void setAnnouncesChanges(bool announcesChanges);
    [[nodiscard]] bool announcesChanges() const { return m_announcesChanges; }

    // The lines as they are shown, the last one with an ellipsis when there is more.
    [[nodiscard]] QStringList shownLines() const;

signals:
    // The label shows this other text.
    void stringValueChanged(const QString &text);
    // Assistive technology was told this text.
    void announced(const QString &text);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // In lines.
    [[nodiscard]] int room() const;
    [[nodiscard]] bool isCut() const;
    void announceNews();
    void paintLines(QPainter &painter, const QStringList &lines, const QRect &area) const;

    TextFieldDelegate *m_delegate = nullptr;
    Style m_style = Message;
    bool m_isScrollable = true;
    bool m_announcesChanges = false;
    QString m_announcedHeadline;
    QTimer m_pause; // runs while nothing is announced
};
