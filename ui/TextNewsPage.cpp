#include "ui/NewsPage.h"
#include "ui/Typography.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QStringDecoder>
#include <QTextBrowser>

#include <algorithm>

namespace {

constexpr qint64 LargestPage = 4LL * 1024 * 1024;
constexpr int IdleTimeout = 60000;
// The layout of a table measures those within it, and so on: each level multiplies its time.
constexpr int MostNestedTables = 8;

bool canBeLaidOut(const QString &html)
{
    static const QRegularExpression tag(QStringLiteral("<(/?)table\\b"),
                                        QRegularExpression::CaseInsensitiveOption);
    int depth = 0;
    for (auto found = tag.globalMatch(html); found.hasNext() && depth <= MostNestedTables;) {
        const bool isEnd = found.next().capturedLength(1) > 0;
        depth = std::max(0, depth + (isEnd ? -1 : 1));
    }
    return depth <= MostNestedTables;
}

QString pageStyle()
{
    const auto name = [](QRgb color) { return QColor::fromRgb(color).name(); };
    return QStringLiteral("body, p, li, td { color: %1 } a { color: %2 } h1, h2, h3 { color: %3 }")
        .arg(name(Palette::Text), name(Palette::Teal), name(Palette::Brass));
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
        m_browser->setHtml(isWhole && canBeLaidOut(text) ? text : QString());
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
