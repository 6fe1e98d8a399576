#include "ui/FingerprintPanel.h"

#include "ui/Accessibility.h"
#include "ui/PictureView.h"
#include "ui/Typography.h"

#include <QLabel>
#include <QLayout>
#include <QPushButton>

namespace {

constexpr int PictureSize = 96;
constexpr int PictureGap = 22;

Alert alertFor(const QString &reason)
{
    Alert alert;
    alert.messageText = reason;
    alert.informativeText = FingerprintPanel::tr("Put your finger on the reader.");
    alert.buttons = {FingerprintPanel::tr("Cancel")};
    return alert;
}

} // namespace

FingerprintPanel::FingerprintPanel(const QString &reason, QWidget *owner)
    : AlertPanel(alertFor(reason), std::nullopt, owner)
{
    const auto labels = findChildren<QLabel *>();
    m_hint = labels.constLast();
    Accessibility::makeSpoken(*m_hint);
    for (QPushButton *button : findChildren<QPushButton *>())
        button->setDefault(false);
    addPicture();
}

void FingerprintPanel::addPicture()
{
    QMargins margins = layout()->contentsMargins();
    m_picture = new PictureView(this);
    m_picture->setPictureName(QStringLiteral("touchbar_fingerprint_over"));
    m_picture->setGeometry(margins.left() - 8, 0, PictureSize, PictureSize);
    margins.setLeft(margins.left() + PictureSize - 8 + PictureGap);
    layout()->setContentsMargins(margins);
}

void FingerprintPanel::resizeEvent(QResizeEvent *event)
{
    AlertPanel::resizeEvent(event);
    m_picture->move(m_picture->x(), (height() - PictureSize) / 2);
}

void FingerprintPanel::setHint(const QString &hint)
{
    m_hint->setText(hint);
    // What is new must catch the eye of somebody who looks at the reader.
    m_hint->setStyleSheet(QStringLiteral("color: %1").arg(QColor::fromRgb(Palette::Brass).name()));
    setAccessibleDescription(hint);
    Accessibility::speak(*m_hint);
}

QString FingerprintPanel::hint() const { return m_hint->text(); }
