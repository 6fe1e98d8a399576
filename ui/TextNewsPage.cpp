#include "platform/HttpClient.h"
#include "ui/NewsPage.h"
#include "ui/NewsText.h"
#include "ui/Typography.h"

#include <QPointer>
#include <QScrollBar>
#include <QStringDecoder>
#include <QTextBrowser>

#include <optional>

namespace {

constexpr qint64 LargestPage = 4LL * 1024 * 1024;

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
    TextNewsPage(QWidget *parent, HttpClient &httpClient, NewsView::Policy policy)
        : m_browser(new Browser(parent)), m_policy(std::move(policy)), m_httpClient(httpClient)
    {
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
        HttpRequest request;
        request.url = url;
        request.largestBody = LargestPage;
        // The browser ends no later than this page does.
        const auto isWanted = [this, browser = m_browser, load = ++m_loads] {
            return browser && load == m_loads;
        };
        // A page that leads elsewhere is none; what was shown before stays.
        const auto leadsElsewhere = std::make_shared<bool>(false);
        request.mayFollow = [isWanted, policy = m_policy, leadsElsewhere](const QUrl &target) {
            *leadsElsewhere = !isWanted() || !policy(target);
            return !*leadsElsewhere;
        };
        m_httpClient.sendAsynchronousRequest(
            request, [isWanted, browser = m_browser, leadsElsewhere](
                         const std::optional<QByteArray> &page, const std::optional<Error> &) {
                if (isWanted() && !*leadsElsewhere)
                    browser->setHtml(page ? simpleNews(decoded(*page)) : QString());
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
    static QString decoded(const QByteArray &page)
    {
        return QStringDecoder::decoderForHtml(page).decode(page);
    }

    const QPointer<Browser> m_browser; // also a child of the view, which may delete it first
    const NewsView::Policy m_policy;
    HttpClient &m_httpClient;
    QUrl m_url;
    int m_loads = 0; // the last one counts
};

} // namespace

NewsView::PageFactory textNewsPages(HttpClient &httpClient)
{
    return [&httpClient](QWidget *parent, const NewsView::Policy &policy) {
        return std::make_unique<TextNewsPage>(parent, httpClient, policy);
    };
}
