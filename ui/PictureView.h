#pragma once

#include "ui/Picture.h"

#include <QWidget>

// Shows one picture, stretched to the view. Lets the mouse through to what lies behind.
class PictureView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString picture READ pictureName WRITE setPictureName)
    Q_PROPERTY(bool replacesBackground READ replacesBackground WRITE setReplacesBackground)

public:
    explicit PictureView(QWidget *parent = nullptr);

    // By name; an unknown name shows nothing.
    void setPictureName(const QString &name);
    [[nodiscard]] QString pictureName() const { return m_picture.name(); }

    // Whether the picture takes the place of what lies behind it, also where one could see that
    // through it. For a picture with nothing behind, which is drawn faster so. False at first.
    void setReplacesBackground(bool replaces);
    [[nodiscard]] bool replacesBackground() const { return m_replacesBackground; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Picture m_picture;
    bool m_replacesBackground = false;
};
