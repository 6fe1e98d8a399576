#include "Scene.h"

#include "ui/CustomTouchBarView.h"
#include "ui/InterfaceLoader.h"
#include "ui/NewsPage.h"
#include "ui/PictureView.h"
#include "ui/VARNOProgressView.h"

#include <QApplication>
#include <QTest>

#include <cstdio>

namespace {

constexpr int Patience = 15000;
constexpr int LightDotsOfAPage = 500;
constexpr int Surroundings = 24;
constexpr int TouchBarGap = -14;

} // namespace

Scene::Scene(Camera &sceneCamera, const Setting &setting)
    : camera(sceneCamera),
      translations(std::make_unique<Translations>(QStringList{setting.language})),
      httpClient(makeHttpClient(configuration.extraCertificateFile))
{
    if (!setting.isOnline)
        configuration.accountHost = QStringLiteral("account.localhost:1");
    view = qobject_cast<LauncherView *>(InterfaceLoader().load(QStringLiteral("Launcher")));
    window.setContentView(view);
    alerts.setWindow(&window);
    fingerprint.setWindow(&window);
    view->setServices({configuration, *httpClient, workspace, alerts, stored, [] {},
                       newsPages(*httpClient, configuration.extraCertificateFile)});
    view->awakeFromNib();
    view->prepareForLogin();
    if (setting.isOnline)
        view->setServerVersion(QStringLiteral("7.3.0"));
    window.center();
    window.show();
    if (!QTest::qWaitForWindowActive(&window))
        std::fputs("gallery: the window did not get the keyboard\n", stderr);
    if (setting.isOnline)
        waitForNews();
}

Scene::~Scene() { m_touchBarHost.reset(); }

void Scene::waitForNews() const
{
    const QWidget &news = child("newsView");
    const QRect part(news.mapToGlobal(QPoint()), news.size());
    if (!QTest::qWaitFor([&] { return camera.lightDots(part) > LightDotsOfAPage; }, Patience))
        std::fputs("gallery: no news came\n", stderr);
}

void Scene::fill() const
{
    view->accountIDField()->setStringValue(QStringLiteral("wren"));
    view->passwordField()->setStringValue(QStringLiteral("moorland-7"));
}

void Scene::show(double progress, const QString &status) const
{
    view->hideLoginForm(true);
    view->patcherProgressBar()->setValue(progress);
    view->swordsmenImage()->setHidden(false);
    view->setStatus(status);
}

void Scene::ask(const QString &message, const QString &explanation, const QStringList &buttons,
                std::optional<AlertTextField> field)
{
    alerts.beginSheet({message, explanation, buttons}, field, [](int, const QString &) {});
}

void Scene::showTouchBar(bool isPlayable)
{
    m_isPlayable = isPlayable;
    m_touchBarHost = makeTouchBarHost(window, TouchBarGap);
    TouchBar bar;
    bar.delegate = this;
    bar.defaultItemIdentifiers = {QStringLiteral("strip")};
    m_touchBarHost->setTouchBar(bar);
}

std::unique_ptr<CustomTouchBarItem> Scene::touchBarMakeItemForIdentifier(const TouchBar &,
                                                                         const QString &identifier)
{
    std::unique_ptr<QWidget> loaded(InterfaceLoader().load(QStringLiteral("CustomTouchBar")));
    auto &strip = static_cast<CustomTouchBarView &>(*loaded);
    strip.setServices(configuration, workspace);
    strip.awakeFromNib();
    strip.setPlayable(m_isPlayable);
    auto item = std::make_unique<CustomTouchBarItem>(identifier);
    item->setView(std::move(loaded));
    return item;
}

void Scene::take(const QString &name) const
{
    QRect part = window.frameGeometry();
    const auto windows = QApplication::topLevelWidgets();
    for (const QWidget *other : windows)
        if (other->isVisible() && other->parentWidget())
            part |= other->frameGeometry();
    camera.take(name, part);
}

void Scene::take(const QString &name, const QWidget &control) const
{
    const QRect part(control.mapToGlobal(QPoint()), control.size());
    camera.take(name, part.adjusted(-Surroundings, -Surroundings, Surroundings, Surroundings));
}

QWidget &Scene::child(const char *name) const
{
    auto *widget = view->findChild<QWidget *>(QLatin1String(name));
    if (!widget)
        qFatal("The view has no %s.", name);
    return *widget;
}
