#pragma once

#include "FakeAlertPresenter.h"
#include "FakeBiometricContext.h"
#include "RecordingWorkspace.h"
#include "TestFolder.h"
#include "account/LocalAuthenticationHandler.h"
#include "app/Configuration.h"
#include "platform/HttpClient.h"
#include "platform/UserDefaults.h"
#include "ui/CustomWindow.h"
#include "ui/LauncherView.h"
#include "ui/LauncherViewDelegate.h"

#include <atomic>
#include <mutex>

// Keeps what the view asks of the controller: "login <name>|<password>", "update
// <name>|<password>".
class RecordingViewDelegate final : public LauncherViewDelegate
{
public:
    void loginUsername(const QString &username, const QString &password) override
    {
        calls += QStringLiteral("login %1|%2").arg(username, password);
    }
    void textFieldUpdate(const QString &username, const QString &password) override
    {
        calls += QStringLiteral("update %1|%2").arg(username, password);
    }

    QStringList calls;
};

// A network on which every whole read brings the same; keeps what was asked for.
class OneAnswerHttpClient final : public HttpClient
{
public:
    std::shared_ptr<HttpConnection> makeConnection(const HttpRequest &,
                                                   std::shared_ptr<HttpConnectionDelegate>) override
    {
        return nullptr;
    }
    Contents dataWithContentsOfURL(const QUrl &url, qint64 /*largestBody*/) override
    {
        const std::lock_guard lock(m_mutex);
        m_urls += QString::fromLatin1(url.toEncoded());
        return {answer, 0, std::nullopt};
    }
    [[nodiscard]] QStringList urls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_urls;
    }

    std::optional<QByteArray> answer;

private:
    mutable std::mutex m_mutex;
    QStringList m_urls;
};

// The launcher window with everything around it, none of it real. The news page is one that renders
// nothing.
class ViewWorld
{
public:
    ViewWorld();
    ~ViewWorld();

    // On the screen and with the keyboard.
    void showWindow();
    // Runs what waits on the main queue.
    static void runMainQueue();

    template<typename Widget>
    [[nodiscard]] Widget &child(const char *name) const
    {
        auto *widget = view->findChild<Widget *>(QLatin1String(name));
        if (!widget)
            qFatal("The view has no %s.", name);
        return *widget;
    }
    // The visible children of these names, in this order.
    [[nodiscard]] QStringList visible(const QStringList &names) const;

    TestFolder folder;
    Configuration configuration;
    OneAnswerHttpClient httpClient;
    RecordingWorkspace workspace;
    FakeAlertPresenter alertPresenter;
    FakeBiometricContext biometrics;
    UserDefaults userDefaults;
    LocalAuthenticationHandler localAuthentication;
    std::atomic<int> terminations = 0;
    RecordingViewDelegate delegate;
    QStringList loadedPages; // by the news page that renders nothing
    CustomWindow window;
    LauncherView *view = nullptr; // the window's
};
