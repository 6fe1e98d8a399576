#pragma once

#include "ui/AlertPanel.h"

class PictureView;
class QLabel;

// The window of the fingerprint question: an alert with the picture of a finger and one button,
// which is not the default one, so that a Return still on its way cannot cancel. Main thread only.
class FingerprintPanel : public AlertPanel
{
    Q_OBJECT

public:
    FingerprintPanel(const QString &reason, QWidget *owner);

    // Shows that in place of what the player was told to do before, and reads it out.
    void setHint(const QString &hint);
    [[nodiscard]] QString hint() const;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void addPicture();

    QLabel *m_hint = nullptr;
    PictureView *m_picture = nullptr;
};
