#pragma once

#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <functional>
#include <memory>

class NewsPage;

// Where a policy says what becomes of one navigation. Good during the call that hands it over.
class DecisionListener
{
public:
    virtual ~DecisionListener() = default;
    // The page loads inside the view. Without that the navigation does not happen.
    virtual void use() = 0;
};

// Decides about each navigation before it happens. Main thread.
class WebPolicyDelegate
{
public:
    virtual ~WebPolicyDelegate() = default;
    // `url` is where the page, one of its frames, a redirect or a window that the page wants to
    // open would go.
    virtual void webViewDecidePolicyForNavigationAction(const QUrl &url,
                                                        DecisionListener &listener) = 0;
};

// A place for one web page. A page that cannot be loaded leaves the place empty. Main thread only.
class NewsView : public QWidget
{
    Q_OBJECT

public:
    // Whether the navigation may happen.
    using Policy = std::function<bool(const QUrl &url)>;
    using PageFactory =
        std::function<std::unique_ptr<NewsPage>(QWidget *parent, const Policy &policy)>;

    explicit NewsView(QWidget *parent = nullptr);
    ~NewsView() override;

    // Loads, or loads anew, as soon as there is something that renders. The last URL counts.
    void load(const QUrl &url);
    // Without a background the page is drawn over what lies behind the view.
    void setDrawsBackground(bool drawsBackground);
    // Null refuses every navigation. The delegate outlives the view or is taken away.
    void setPolicyDelegate(WebPolicyDelegate *delegate) { m_policyDelegate = delegate; }
    // What makes the renderer, a little later and once. That may take longer than the rest of the
    // launcher: not before the window has its first frame. Without one the place stays empty.
    void setPageFactory(PageFactory factory);

    [[nodiscard]] bool drawsBackground() const { return m_drawsBackground; }
    // The URL that was asked for last.
    [[nodiscard]] QUrl url() const { return m_url; }
    // Null until made.
    [[nodiscard]] NewsPage *page() const { return m_page.get(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void makePage();
    void keepTabPlace();
    [[nodiscard]] bool decide(const QUrl &url);

    QUrl m_url;
    bool m_drawsBackground = true;
    WebPolicyDelegate *m_policyDelegate = nullptr;
    PageFactory m_pageFactory;
    std::unique_ptr<NewsPage> m_page;
    QPointer<QWidget> m_previous; // in the order of Tab
};
