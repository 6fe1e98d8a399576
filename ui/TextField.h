#pragma once

#include <QLineEdit>

// What ended the editing of a field.
enum class TextMovement {
    Other = 0,
    Return = 16,
    Tab = 17,
    Backtab = 18,
    Cancel = 23,
};

// Hears what the player does in text fields. Main thread.
class TextFieldDelegate
{
public:
    virtual ~TextFieldDelegate() = default;
    // The player changed the text of that field.
    virtual void controlTextDidChange(QObject *control) = 0;
    // The player is done with that field, for now.
    virtual void controlTextDidEndEditing(QObject *control, TextMovement movement) = 0;
};

// A text field that tells its delegate about the player's edits. Texts set by the program are not
// told.
class TextField : public QLineEdit
{
    Q_OBJECT

public:
    explicit TextField(QWidget *parent = nullptr);

    // The delegate must outlive the field or be taken away; null for none.
    void setDelegate(TextFieldDelegate *delegate) { m_delegate = delegate; }
    [[nodiscard]] TextFieldDelegate *delegate() const { return m_delegate; }

    [[nodiscard]] QString stringValue() const { return text(); }
    void setStringValue(const QString &text) { setText(text); }
    // Takes the keyboard and selects the text.
    void becomeFirstResponder();
    // Gives the keyboard back if the field has it.
    void resignFirstResponder() { clearFocus(); }

    // The part of these bounds in which the text is drawn and edited, in points: its right end
    // stays free, whichever way the text runs.
    [[nodiscard]] virtual QRectF drawingRectForBounds(const QRectF &bounds) const;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void endEditing(TextMovement movement);

    TextFieldDelegate *m_delegate = nullptr;
};

// A text field for secrets: shows dots, and keeps what is typed from undo, from input methods that
// learn and from the clipboard.
class SecureTextField : public TextField
{
    Q_OBJECT

public:
    explicit SecureTextField(QWidget *parent = nullptr);
};
