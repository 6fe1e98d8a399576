#include "ViewWorld.h"

#include "ui/InterfaceLoader.h"
#include "ui/NewsPage.h"

#include <QSignalSpy>
#include <QTest>

namespace {

class EmptyPage final : public NewsPage
{
public:
    EmptyPage(QWidget *parent, QStringList &loaded) : m_widget(parent), m_loaded(loaded)
    {
        m_widget.setObjectName(QStringLiteral("newsPage"));
        m_widget.setFocusPolicy(Qt::StrongFocus);
    }

    QWidget *widget() override { return &m_widget; }
    void load(const QUrl &url) override { m_loaded += QString::fromLatin1(url.toEncoded()); }
    void setDrawsBackground(bool) override {}

private:
    QWidget m_widget;
    QStringList &m_loaded;
};

Configuration testConfiguration(const QString &dataFolder)
{
    Configuration result;
    result.downloadHost = QStringLiteral("download.test");
    result.accountHost = QStringLiteral("account.test");
    result.websiteHost = QStringLiteral("www.test");
    result.forumHost = QStringLiteral("forum.test");
    result.wikiHost = QStringLiteral("wiki.test");
    result.dataFolder = dataFolder;
    return result;
}

} // namespace

ViewWorld::ViewWorld()
    : configuration(testConfiguration(folder.path())),
      userDefaults(folder.path(QStringLiteral("settings.sqlite"))),
      localAuthentication(biometrics, userDefaults, alertPresenter),
      window(QRect(0, 0, 1000, 640))
{
    view = qobject_cast<LauncherView *>(InterfaceLoader().load(QStringLiteral("Launcher")));
    if (!view)
        qFatal("The launcher's interface file does not make a launcher view.");
    window.setContentView(view);
    view->setServices({configuration, httpClient, workspace, alertPresenter, localAuthentication,
                       [this] { ++terminations; }});
    child<NewsView>("newsView").setPageFactory([this](QWidget *parent, const NewsView::Policy &) {
        return std::make_unique<EmptyPage>(parent, loadedPages);
    });
    view->awakeFromNib();
    view->setDelegate(&delegate);
}

ViewWorld::~ViewWorld() { runMainQueue(); }

void ViewWorld::showWindow()
{
    QSignalSpy appeared(&window, &CustomWindow::appeared);
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        qFatal("The window did not get the keyboard.");
    if (appeared.isEmpty() && !appeared.wait())
        qFatal("The window did not appear.");
}

void ViewWorld::runMainQueue() { QCoreApplication::sendPostedEvents(QCoreApplication::instance()); }

QStringList ViewWorld::visible(const QStringList &names) const
{
    QStringList result;
    for (const QString &name : names)
        if (child<QWidget>(name.toLatin1().constData()).isVisibleTo(view))
            result += name;
    return result;
}
