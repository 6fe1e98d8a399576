#include "ui/NewsView.h"

#include "ui/NewsPage.h"

#include <QTimer>

namespace {

class Decision final : public DecisionListener
{
public:
    void use() override { m_isUsed = true; }
    [[nodiscard]] bool isUsed() const { return m_isUsed; }

private:
    bool m_isUsed = false;
};

} // namespace

NewsView::NewsView(QWidget *parent) : QWidget(parent) {}

NewsView::~NewsView() = default;

void NewsView::setPageFactory(PageFactory factory)
{
    m_pageFactory = std::move(factory);
    // What was changed together with it is painted first.
    QTimer::singleShot(0, this, &NewsView::makePage);
}

void NewsView::load(const QUrl &url)
{
    m_url = url;
    if (m_page)
        m_page->load(url);
}

void NewsView::setDrawsBackground(bool drawsBackground)
{
    m_drawsBackground = drawsBackground;
    if (m_page)
        m_page->setDrawsBackground(drawsBackground);
}

void NewsView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_page)
        m_page->widget()->setGeometry(rect());
}

void NewsView::makePage()
{
    if (m_page || !m_pageFactory)
        return;
    m_page = m_pageFactory(this, [this](const QUrl &url) { return decide(url); });
    m_page->setDrawsBackground(m_drawsBackground);
    m_page->widget()->setAccessibleName(tr("News"));
    m_page->widget()->setGeometry(rect());
    m_page->widget()->show();
    if (m_url.isValid())
        m_page->load(m_url);
}

bool NewsView::decide(const QUrl &url)
{
    Decision decision;
    if (m_policyDelegate)
        m_policyDelegate->webViewDecidePolicyForNavigationAction(url, decision);
    return decision.isUsed();
}
