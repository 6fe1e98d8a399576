#include "ui/WebNewsPage.h"

#include "ui/Typography.h"

#include <QFontInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QQuickWindow>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslError>
#include <QWebEngineCertificateError>
#include <QWebEngineNewWindowRequest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineRegisterProtocolHandlerRequest>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>
#include <QWebEngineView>

namespace {

constexpr int FontSize = 16;

// Certificates are checked against the default configuration, so the extra authorities join it.
QList<QSslCertificate> trustExtraCertificates(const QString &file)
{
    auto certificates = file.isEmpty() ? QList<QSslCertificate>() : QSslCertificate::fromPath(file);
    if (!certificates.isEmpty()) {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.addCaCertificates(certificates);
        QSslConfiguration::setDefaultConfiguration(configuration);
    }
    return certificates;
}

void useOurTypefaces(QWebEngineSettings &settings)
{
    settings.setFontFamily(QWebEngineSettings::SerifFont,
                           QFontInfo(Typography::display(FontSize)).family());
    settings.setFontFamily(QWebEngineSettings::SansSerifFont,
                           QFontInfo(Typography::text(FontSize)).family());
}

void restrict(QWebEngineSettings &settings)
{
    for (const auto attribute :
         {QWebEngineSettings::AutoLoadIconsForPage, QWebEngineSettings::ErrorPageEnabled,
          QWebEngineSettings::FocusOnNavigationEnabled,
          QWebEngineSettings::FullScreenSupportEnabled, QWebEngineSettings::JavascriptCanPaste,
          QWebEngineSettings::JavascriptCanAccessClipboard,
          QWebEngineSettings::LocalContentCanAccessFileUrls,
          QWebEngineSettings::LocalStorageEnabled, QWebEngineSettings::NavigateOnDropEnabled,
          QWebEngineSettings::PdfViewerEnabled, QWebEngineSettings::PluginsEnabled,
          QWebEngineSettings::ScreenCaptureEnabled})
        settings.setAttribute(attribute, false);
}

// The engine asks nobody about a navigation inside the page, so this has it ask for a window
// instead, which is put to the policy. And it asks the player whether the page may be left; nobody
// answers for the player, so the page does not get to ask. Runs before the page's own scripts and
// out of their reach.
constexpr char HouseRules[] =
    "navigation.addEventListener('navigate', event => {"
    "    if (event.hashChange) { event.preventDefault(); open(event.destination.url); }"
    "});"
    "addEventListener('beforeunload', event => event.stopImmediatePropagation(), true);";

void addHouseRules(QWebEngineScriptCollection &scripts)
{
    QWebEngineScript rules;
    rules.setSourceCode(QLatin1String(HouseRules));
    rules.setInjectionPoint(QWebEngineScript::DocumentCreation);
    rules.setWorldId(QWebEngineScript::ApplicationWorld);
    rules.setRunsOnSubFrames(true);
    scripts.insert(rules);
}

class Page final : public QWebEnginePage
{
public:
    Page(QWebEngineProfile *profile, const QString &extraCertificateFile, NewsView::Policy policy)
        : QWebEnginePage(profile),
          m_policy(std::move(policy)),
          m_extraCertificates(trustExtraCertificates(extraCertificateFile))
    {
        restrict(*settings());
        useOurTypefaces(*settings());
        addHouseRules(scripts());
        connect(this, &QWebEnginePage::certificateError, this, &Page::decideAboutCertificate);
        connect(this, &QWebEnginePage::newWindowRequested, this,
                [this](const QWebEngineNewWindowRequest &request) {
                    if (m_policy(request.requestedUrl()))
                        load(request.requestedUrl());
                });
        connect(this, &QWebEnginePage::featurePermissionRequested, this,
                [this](const QUrl &origin, Feature feature) {
                    setFeaturePermission(origin, feature, PermissionDeniedByUser);
                });
        connect(this, &QWebEnginePage::registerProtocolHandlerRequested, this,
                [](QWebEngineRegisterProtocolHandlerRequest request) { request.reject(); });
    }

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType, bool) override
    {
        return m_policy(url);
    }
    void javaScriptAlert(const QUrl &, const QString &) override {}
    bool javaScriptConfirm(const QUrl &, const QString &) override { return false; }
    bool javaScriptPrompt(const QUrl &, const QString &, const QString &, QString *) override
    {
        return false;
    }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString &, int,
                                  const QString &) override
    {
    }
    QStringList chooseFiles(FileSelectionMode, const QStringList &, const QStringList &) override
    {
        return {};
    }

private:
    // The engine knows the system's authorities only. A certificate that fails there is looked at
    // again with the extra ones; anything else that is wrong with it stays wrong.
    void decideAboutCertificate(QWebEngineCertificateError error)
    {
        const bool mayBeOurs =
            error.type() == QWebEngineCertificateError::CertificateAuthorityInvalid;
        if (mayBeOurs && error.isOverridable() && !m_extraCertificates.isEmpty() &&
            QSslCertificate::verify(error.certificateChain(), error.url().host()).isEmpty())
            error.acceptCertificate();
        else
            error.rejectCertificate();
    }

    const NewsView::Policy m_policy;
    const QList<QSslCertificate> m_extraCertificates;
};

class WebNewsPage final : public NewsPage
{
public:
    WebNewsPage(QWidget *parent, const QString &extraCertificateFile, NewsView::Policy policy,
                const WebNewsPageMaker::Log &log)
        : m_view(new QWebEngineView(parent)),
          m_page(std::make_unique<Page>(
              &m_profile, extraCertificateFile,
              [this, policy = std::move(policy)](const QUrl &navigated) {
                  const bool isUsed = policy(navigated);
                  if (!isUsed)
                      m_isLoading = false; // it ends the load for the engine, but the page stays
                  return isUsed;
              }))
    {
        // Without a name a profile keeps nothing on the disk. A download that nobody accepts is
        // cancelled, and so is whatever else a page asks for that nobody answers.
        m_profile.setHttpAcceptLanguage(QLocale().uiLanguages().join(QLatin1Char(',')));
        m_profile.setSpellCheckEnabled(false);
        m_view->setPage(m_page.get());
        m_view->setContextMenuPolicy(Qt::NoContextMenu);
        m_view->setAcceptDrops(false);
        QObject::connect(
            m_page.get(), &QWebEnginePage::renderProcessTerminated, m_view,
            [this, log](QWebEnginePage::RenderProcessTerminationStatus, int code) {
                log(QStringLiteral("The news page's process ended with %1.").arg(code));
                m_view->hide();
            });
        QObject::connect(m_page.get(), &QWebEnginePage::loadFinished, m_view,
                         [this](bool isWhole) { endLoad(isWhole); });
    }

    ~WebNewsPage() override { delete m_view; }

    QWidget *widget() override { return m_view; }

    void load(const QUrl &url) override
    {
        m_isLoading = true;
        m_view->show();
        m_page->load(url);
    }

    void setDrawsBackground(bool drawsBackground) override
    {
        m_page->setBackgroundColor(drawsBackground ? QColor::fromRgb(Palette::Peat)
                                                   : QColor(Qt::transparent));
    }

private:
    // A link that the policy has refused ends as a load that failed, too, and changes nothing.
    void endLoad(bool isWhole)
    {
        if (std::exchange(m_isLoading, false) || isWhole)
            m_view->setVisible(isWhole);
    }

    bool m_isLoading = false; // what load() was told
    QWebEngineProfile m_profile;
    QPointer<QWebEngineView> m_view; // also a child of the news view, which may delete it first
    std::unique_ptr<Page> m_page;    // goes before its profile
};

class Maker final : public QObject, public WebNewsPageMaker
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID WebNewsPageMaker_iid)
    Q_INTERFACES(WebNewsPageMaker)

public:
    Maker()
    {
        // Pages are drawn without OpenGL, as the rest of the window is. With it the desktop would
        // have to make the window anew when the page joins it, in front of the player.
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        // A page of text about the graphics card at every start.
        QLoggingCategory::setFilterRules(QStringLiteral("qt.webenginecontext.info=false"));
    }

    std::unique_ptr<NewsPage> make(QWidget *parent, const QString &extraCertificateFile,
                                   NewsView::Policy policy, const Log &log) override
    {
        return std::make_unique<WebNewsPage>(parent, extraCertificateFile, std::move(policy), log);
    }
};

} // namespace

#include "WebNewsPage.moc"
