#include "ui/CustomTouchBarView.h"

#include "app/Configuration.h"
#include "platform/Workspace.h"
#include "ui/LauncherView.h"
#include "ui/PictureView.h"
#include "ui/TouchBarButton.h"

CustomTouchBarView::CustomTouchBarView(QWidget *parent) : QWidget(parent) {}

CustomTouchBarView::~CustomTouchBarView() = default;

void CustomTouchBarView::setServices(const Configuration &configuration, Workspace &workspace)
{
    m_configuration = &configuration;
    m_workspace = &workspace;
}

void CustomTouchBarView::awakeFromNib()
{
    m_logo = findChild<PictureView *>(QStringLiteral("logo"));
    m_playButton = findChild<RolloverButton *>(QStringLiteral("playButton"));
    bindActions();
    setPlayable(false);
}

void CustomTouchBarView::bindActions()
{
    using Action = void (CustomTouchBarView::*)(QObject *);
    struct Binding
    {
        const char *button;
        const char *rolloverImage;
        Action action;
    };
    constexpr Binding bindings[] = {
        {"releaseNotesButton", "touchbar_link_over", &CustomTouchBarView::releasedNotesPressed},
        {"manageButton", "touchbar_link_over", &CustomTouchBarView::manageAccountPressed},
        {"playersGuideButton", "touchbar_link_over", &CustomTouchBarView::playersGuidePressed},
        {"communityButton", "touchbar_link_over", &CustomTouchBarView::communityPressed},
        {"touchIDButton", "touchbar_fingerprint_over", &CustomTouchBarView::touchIDPressed},
        {"playButton", "touchbar_play_over", &CustomTouchBarView::playPressed},
    };
    for (const Binding &binding : bindings) {
        auto *button = findChild<RolloverButton *>(QLatin1String(binding.button));
        if (!button)
            continue;
        button->awakeFromNib();
        button->setupWithRolloverImageName(QLatin1String(binding.rolloverImage));
        connect(button, &QAbstractButton::clicked, this,
                [this, button, perform = binding.action] { (this->*perform)(button); });
    }
}

void CustomTouchBarView::setPlayable(bool isPlayable)
{
    if (m_playButton)
        m_playButton->setHidden(!isPlayable);
    if (m_logo)
        m_logo->setHidden(isPlayable);
}

void CustomTouchBarView::releasedNotesPressed(QObject *)
{
    open(m_configuration->websiteUrl(QStringLiteral("/releases/")));
}

void CustomTouchBarView::manageAccountPressed(QObject *)
{
    open(m_configuration->websiteUrl(QStringLiteral("/account/")));
}

void CustomTouchBarView::playersGuidePressed(QObject *) { open(m_configuration->wikiUrl()); }

void CustomTouchBarView::communityPressed(QObject *) { open(m_configuration->forumUrl()); }

void CustomTouchBarView::playPressed(QObject *)
{
    if (m_launcherView)
        m_launcherView->playPressed(nullptr);
}

void CustomTouchBarView::touchIDPressed(QObject *)
{
    if (m_launcherView)
        m_launcherView->touchIdPressed();
}

void CustomTouchBarView::open(const QString &url) { m_workspace->openURL(QUrl(url)); }

void CustomTouchBarView::setLauncherView(LauncherView *launcherView)
{
    m_launcherView = launcherView;
}

LauncherView *CustomTouchBarView::launcherView() const { return m_launcherView; }
