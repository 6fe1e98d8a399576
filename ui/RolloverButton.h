#pragma once

#include "ui/Picture.h"

#include <QPushButton>

// A button that is a picture, with a caption on it, and another picture while the mouse is over it,
// whether or not the launcher is the active application. Main thread only.
class RolloverButton : public QPushButton
{
    Q_OBJECT
    Q_PROPERTY(QString picture READ pictureName WRITE setPictureName)
    Q_PROPERTY(CaptionStyle captionStyle READ captionStyle WRITE setCaptionStyle)

public:
    enum CaptionStyle {
        NoCaption,   // the picture says it; the text is for the accessible name
        Plate,       // engraved in the middle of a plate
        Link,        // in the middle, like a link in a text
        BelowPicture // small, under an icon
    };
    Q_ENUM(CaptionStyle)

    explicit RolloverButton(QWidget *parent = nullptr);

    // What the initialiser of a button made in code does: keeps the rollover picture, takes what
    // is shown as the normal one, and switches hovering on.
    void initWithRolloverImage(const Picture &image);
    // After the interface file was loaded: the picture from there becomes the normal one, and
    // hovering is on.
    void awakeFromNib();
    // From now on the picture of that name is shown under the mouse; an unknown name leaves the
    // button as it is when the mouse comes.
    void setupWithRolloverImageName(const QString &name);

    void mouseEntered();
    void mouseExited();

    // These three change nothing on the screen by themselves.
    void setRolloverEnabled(bool isRolloverEnabled) { m_isRolloverEnabled = isRolloverEnabled; }
    void setRolloverImage(const Picture &image) { m_rolloverImage = image; }
    void setNormalImage(const Picture &image) { m_normalImage = image; }
    // Shows a picture. With one whose name ends in "_DISABLED" the button looks switched off, to
    // the mouse, too; it can be pressed all the same.
    void setImage(const Picture &image);
    void setCaptionStyle(CaptionStyle style);

    [[nodiscard]] bool isRolloverEnabled() const { return m_isRolloverEnabled; }
    [[nodiscard]] const Picture &rolloverImage() const { return m_rolloverImage; }
    [[nodiscard]] const Picture &normalImage() const { return m_normalImage; }
    [[nodiscard]] const Picture &image() const { return m_image; }
    [[nodiscard]] CaptionStyle captionStyle() const { return m_captionStyle; }
    // In points; 0 when none is shown.
    [[nodiscard]] double captionWidth() const;
    [[nodiscard]] QString pictureName() const { return m_image.name(); }
    void setPictureName(const QString &name) { setImage(Picture::named(name)); }

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] Picture imageToPaint() const;
    [[nodiscard]] bool looksPressed() const { return isDown() && !m_looksSwitchedOff; }
    [[nodiscard]] QColor captionColor() const;
    void paintCaption(QPainter &painter) const;
    void paintFocus(QPainter &painter) const;

    bool m_isRolloverEnabled = false;
    Picture m_rolloverImage;
    Picture m_normalImage;
    Picture m_image;
    bool m_looksHovered = false;
    bool m_looksSwitchedOff = false;
    CaptionStyle m_captionStyle = NoCaption;
};
