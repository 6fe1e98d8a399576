#pragma once

#include <QPointer>
#include <QWidget>

class LauncherView;
class PictureView;
class RolloverButton;
class Workspace;
struct Configuration;

// The launcher's strip for a Touch Bar: four links, a button for the fingerprint, and a play button
// that takes the place of the logo once the player can log in. Knows nothing about logging in: play
// and fingerprint go to the launcher view.
//
// Made from the interface file "CustomTouchBar"; whoever loads it calls setServices() and then
// awakeFromNib(), once each. Main thread only. The widgets are its children; the outlets only point
// at them.
class CustomTouchBarView : public QWidget
{
    Q_OBJECT

public:
    explicit CustomTouchBarView(QWidget *parent = nullptr);
    ~CustomTouchBarView() override;

    // Both outlive the strip.
    void setServices(const Configuration &configuration, Workspace &workspace);
    // Finds the outlets and binds the actions. Shows the logo.
    void awakeFromNib();

    // Shows either the play button or the logo.
    void setPlayable(bool isPlayable);

    // What the buttons do. The sender is not looked at and may be null. The links open in the
    // browser; without a launcher view the last two do nothing.
    void releasedNotesPressed(QObject *sender);
    void manageAccountPressed(QObject *sender);
    void playersGuidePressed(QObject *sender);
    void communityPressed(QObject *sender);
    void playPressed(QObject *sender);
    void touchIDPressed(QObject *sender);

    // Not owned; the window's content usually lives longer than the strip.
    void setLauncherView(LauncherView *launcherView);
    [[nodiscard]] LauncherView *launcherView() const;

private:
    void bindActions();
    void open(const QString &url);

    QPointer<PictureView> m_logo;
    QPointer<RolloverButton> m_playButton;
    QPointer<LauncherView> m_launcherView;
    const Configuration *m_configuration = nullptr;
    Workspace *m_workspace = nullptr;
};
