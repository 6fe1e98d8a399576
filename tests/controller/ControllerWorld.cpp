#include "ControllerWorld.h"

#include "account/VARNOPostHelper.h"
#include "model/SHA256.h"
#include "platform/DispatchQueue.h"
#include "ui/InterfaceLoader.h"
#include "ui/NewsPage.h"
#include "ui/TextLabel.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

namespace {

constexpr QRect WindowFrame(0, 0, 1000, 640);
constexpr int MillisecondsToEnd = 20000;

Configuration configurationFor(quint16 port, const QString &folder)
{
    const auto host = [port](const QString &name) {
        return QStringLiteral("%1.localhost:%2").arg(name).arg(port);
    };
    Configuration result;
    result.downloadHost = host(QStringLiteral("download"));
    result.accountHost = host(QStringLiteral("account"));
    result.websiteHost = host(QStringLiteral("www"));
    result.forumHost = host(QStringLiteral("forum"));
    result.wikiHost = host(QStringLiteral("wiki"));
    result.extraCertificateFile = Certificates::shared().authorityFile();
    result.dataFolder = folder + QStringLiteral("/Quellmoor");
    return result;
}

class BlankPage final : public NewsPage
{
public:
    BlankPage(QWidget *parent, QStringList &loads) : m_widget(new QWidget(parent)), m_loads(loads)
    {
    }

    QWidget *widget() override { return m_widget; }
    void load(const QUrl &url) override { m_loads += url.toString(); }
    void setDrawsBackground(bool) override {}

private:
    QWidget *const m_widget;
    QStringList &m_loads;
};

QString shortHash(const QByteArray &contents) { return SHA256(contents).left(7); }

} // namespace

ControllerWorld::ControllerWorld()
    : configuration(configurationFor(server.port(), folder.path())),
      httpClient(std::make_unique<AdjustableHttpClient>(
          makeHttpClient(configuration.extraCertificateFile))),
      userDefaults(std::make_unique<UserDefaults>(folder.path(QStringLiteral("settings.sqlite")))),
      localAuthentication(
          std::make_unique<LocalAuthenticationHandler>(biometrics, *userDefaults, alerts)),
      window(WindowFrame)
{
    biometrics.evaluability.isPossible = false;
    view = qobject_cast<LauncherView *>(InterfaceLoader().load(QStringLiteral("Launcher")));
    // The news have tests of their own; here only their requests would be in the way.
    view->findChild<NewsView *>()->setPageFactory(
        [this](QWidget *parent, const NewsView::Policy &) {
            return std::make_unique<BlankPage>(parent, newsLoads);
        });
    window.setContentView(view);
    view->setServices({configuration, *httpClient, workspace, alerts, *localAuthentication,
                       [this] { DispatchQueue::main()->async([this] { isTerminated = true; }); }});
    view->awakeFromNib();
    QObject::connect(view->findChild<TextLabel *>(QStringLiteral("statusLabel")),
                     &TextLabel::stringValueChanged, &window,
                     [this](const QString &text) { statuses += text; });
    controller = std::make_shared<ViewController>(
        *view, ControllerServices{configuration, *httpClient, *userDefaults, workspace,
                                  activationPolicy, alerts, *localAuthentication, timer, network});
}

ControllerWorld::~ControllerWorld()
{
    server.release(1000);
    const std::weak_ptr<ViewController> rest = controller;
    DispatchQueue::drain(MillisecondsToEnd); // a check still under way would make a new engine
    const std::weak_ptr<VARNOPatcher> engine = controller->patcher();
    controller->viewWillDisappear();
    controller.reset();
    alerts.sheets.clear();
    biometrics.replies.clear();
    timer.clear();
    // What is in the main queue and on the network still holds it.
    const auto isOver = [&] { return rest.expired() && engine.expired(); };
    if (!QTest::qWaitFor(isOver, MillisecondsToEnd))
        qFatal("something holds the controller or its engine for ever");
}

void ControllerWorld::start()
{
    window.show();
    controller->viewDidLoad();
    controller->viewDidAppear();
}

void ControllerWorld::publish(const QMap<QString, QByteArray> &files, const QJsonObject &others)
{
    QJsonObject entries;
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        entries[file.key()] = QJsonObject{{QStringLiteral("path"), QString()},
                                          {QStringLiteral("hash"), shortHash(file.value())},
                                          {QStringLiteral("patches"), QJsonArray()}};
        const QString path = QStringLiteral("/mac/%1.bz2").arg(file.key());
        server.route(VARNOPostHelper::urlEncode(path).toUtf8(),
                     TestReply::whole(compressBzip2(file.value())));
    }
    QJsonObject manifest = others;
    manifest[QStringLiteral("files")] = entries;
    publishManifest(QJsonDocument(manifest).toJson());
}

void ControllerWorld::publishManifest(const QByteArray &text)
{
    server.route("/mac/patcher.json", TestReply::whole(text));
}

void ControllerWorld::answerLogin(const QJsonObject &reply)
{
    answerLogin(TestReply::whole(QJsonDocument(reply).toJson()));
}

void ControllerWorld::login(const QString &username, const QString &password)
{
    view->accountIDField()->setStringValue(username);
    view->passwordField()->setStringValue(password);
    view->playPressed(nullptr);
}

QString ControllerWorld::status() const { return label("statusLabel"); }

QStringList ControllerWorld::logLines() const
{
    QStringList lines = log.lines();
    lines.removeIf(
        [](const QString &line) { return line.contains(QStringLiteral("Cannot list")); });
    return lines;
}

QString ControllerWorld::label(const char *name) const
{
    return view->findChild<TextLabel *>(QLatin1String(name))->stringValue();
}

bool ControllerWorld::isShown(const char *name) const
{
    return view->findChild<QWidget *>(QLatin1String(name))->isVisible();
}

QStringList ControllerWorld::requests() const
{
    QStringList result;
    const auto all = server.requests();
    for (const TestRequest &request : all)
        result += QStringLiteral("%1 %2%3").arg(
            QString::fromUtf8(request.method),
            QString::fromUtf8(request.header("Host").value(0)).section(u':', 0, 0),
            QString::fromUtf8(request.target));
    return result;
}

int ControllerWorld::requestCount(const QByteArray &pathEnd) const
{
    const auto all = server.requests();
    return int(std::count_if(all.cbegin(), all.cend(), [&pathEnd](const TestRequest &request) {
        return request.target.endsWith(pathEnd);
    }));
}
