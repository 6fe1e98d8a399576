#include "ui/NewsPage.h"
#include "ui/NewsText.h"
#include "ui/Typography.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QScrollBar>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QStringDecoder>
#include <QTextBrowser>

namespace {

constexpr qint64 LargestPage = 4LL * 1024 * 1024;
constexpr int IdleTimeout = 60000;

QString nameOf(QRgb color) { return QColor::fromRgb(color).name(); }

// As pages of news look on the web engine.
QString pageStyle()
{
    return QStringLiteral("p, li { color: %1; margin-top: 4px; margin-bottom: 6px }"
                          "a { color: %2; text-decoration: none }"
                          "h1, h2, h3 { font-family: '%4'; font-weight: 600; margin-bottom: 4px }"
                          "h1 { color: %3; font-size: 22px; margin-top: 0 }"
                          "h2, h3 { color: %1; font-size: 18px; margin-top: 10px }")
        .arg(nameOf(Palette::Text), nameOf(Palette::Teal), nameOf(Palette::Brass),
             Typography::display(22).families().join(QStringLiteral("','")));
}

// A slim handle and no buttons.
QString scrollBarStyle()
{
    return QStringLiteral("QScrollBar { background: transparent; border: none; width: 8px }"
                          "QScrollBar::handle { background: %1; border-radius: 4px;"
                          " min-height: 24px }"
                          "QScrollBar::handle:hover { background: %2 }"
                          "QScrollBar::add-line, QScrollBar::sub-line { height: 0 }"
                          "QScrollBar::add-page, QScrollBar::sub-page { background: none }")
        .arg(QColor::fromRgb(Palette::Mist).darker(200).name(), nameOf(Palette::Mist));
}

// Shows what it is given and fetches nothing by itself.
class Browser final : public QTextBrowser
{
public:
    explicit Browser(QWidget *parent) : QTextBrowser(parent)
    {
        setOpenLinks(false);
        setFrameShape(QFrame::NoFrame);
        setFont(Typography::text(15));
        document()->setDefaultStyleSheet(pageStyle());
        document()->setDocumentMargin(16);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // long words break
        verticalScrollBar()->setStyleSheet(scrollBarStyle());
    }

    QVariant loadResource(int, const QUrl &) override { return {}; }
};

class TextNewsPage final : public NewsPage
{
public:
    TextNewsPage(QWidget *parent, const QString &extraCertificateFile, NewsView::Policy policy)
        : m_browser(new Browser(parent)),
          m_policy(std::move(policy)),
          m_ssl(QSslConfiguration::defaultConfiguration())
    {
        m_ssl.addCaCertificates(QSslCertificate::fromPath(extraCertificateFile));
        m_network.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
        m_network.setTransferTimeout(IdleTimeout);
        QObject::connect(m_browser, &QTextBrowser::anchorClicked, m_browser,
                         [this](const QUrl &link) { load(m_url.resolved(link)); });
    }

    ~TextNewsPage() override { delete m_browser; }

    QWidget *widget() override { return m_browser; }

    void load(const QUrl &url) override
    {
        if (!m_policy(url))
            return;
        m_url = url;
        QNetworkRequest request(url);
        request.setSslConfiguration(m_ssl);
        // A connection for either protocol that ends without an answer can go unnoticed by Qt, and
        // the page then comes to its end at the time-out only.
        request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
        QNetworkReply *reply = m_network.get(request);
        const auto dropWhenTooLarge = [reply](qint64 received) {
            if (received > LargestPage)
                reply->abort();
        };
        QObject::connect(reply, &QNetworkReply::downloadProgress, reply, dropWhenTooLarge);
        QObject::connect(reply, &QNetworkReply::finished, m_browser, [this, reply] {
            reply->deleteLater();
            show(*reply);
        });
    }

    void setDrawsBackground(bool drawsBackground) override
    {
        QPalette colors = m_browser->palette();
        colors.setColor(QPalette::Base,
                        drawsBackground ? QColor::fromRgb(Palette::Peat) : QColor(Qt::transparent));
        colors.setColor(QPalette::Text, QColor::fromRgb(Palette::Text));
        m_browser->setPalette(colors);
    }

private:
    void show(QNetworkReply &reply)
    {
        const QVariant redirect = reply.attribute(QNetworkRequest::RedirectionTargetAttribute);
        if (redirect.isValid()) {
            load(reply.url().resolved(redirect.toUrl()));
            return;
        }
        const QByteArray html = reply.readAll();
        const bool isWhole = reply.error() == QNetworkReply::NoError || !html.isEmpty();
        const QString text = QStringDecoder::decoderForHtml(html).decode(html);
        m_browser->setHtml(isWhole ? simpleNews(text) : QString());
    }

    const QPointer<Browser> m_browser; // also a child of the view, which may delete it first
    const NewsView::Policy m_policy;
    QSslConfiguration m_ssl;
    QUrl m_url;
    QNetworkAccessManager m_network; // last: its replies go first
};

} // namespace

std::unique_ptr<NewsPage> makeTextNewsPage(QWidget *parent, const QString &extraCertificateFile,
                                           NewsView::Policy policy)
{
    return std::make_unique<TextNewsPage>(parent, extraCertificateFile, std::move(policy));
}
