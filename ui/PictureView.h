#pragma once

#include "ui/Picture.h"

#include <QWidget>

// Shows one picture, stretched to the view. Lets the mouse through to what lies behind.
class PictureView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString picture READ pictureName WRITE setPictureName)

public:
    explicit PictureView(QWidget *parent = nullptr);

    // By name; an unknown name shows nothing.
    void setPictureName(const QString &name);
    [[nodiscard]] QString pictureName() const { return m_picture.name(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Picture m_picture;
};
