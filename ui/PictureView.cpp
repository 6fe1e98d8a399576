#include "ui/PictureView.h"

#include <QPainter>

PictureView::PictureView(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void PictureView::setPictureName(const QString &name)
{
    m_picture = Picture::named(name);
    update();
}

void PictureView::setReplacesBackground(bool replaces)
{
    m_replacesBackground = replaces;
    update();
}

void PictureView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_replacesBackground)
        painter.setCompositionMode(QPainter::CompositionMode_Source);
    m_picture.paint(painter, rect());
}
