#include "ui/FingerprintPanel.h"

#include "ui/PictureView.h"

#include <QAccessible>
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
    for (QPushButton *button : findChildren<QPushButton *>())
        button->setDefault(false);
    addPicture();
}

void FingerprintPanel::addPicture()
{
    QMargins margins = layout()->contentsMargins();
    auto *picture = new PictureView(this);
    picture->setPictureName(QStringLiteral("touchbar_fingerprint_over"));
    picture->setGeometry(margins.left() - 8, margins.top() - 2, PictureSize, PictureSize);
    margins.setLeft(margins.left() + PictureSize - 8 + PictureGap);
    layout()->setContentsMargins(margins);
}

void FingerprintPanel::setHint(const QString &hint)
{
    m_hint->setText(hint);
    setAccessibleDescription(hint);
    for (const QAccessible::Event type : {QAccessible::DescriptionChanged, QAccessible::Alert}) {
        QAccessibleEvent event(this, type);
        QAccessible::updateAccessibility(&event);
    }
}

QString FingerprintPanel::hint() const { return m_hint->text(); }
