#include "ui/NewsView.h"

#include "ui/NewsPage.h"

#include <QEvent>
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

NewsView::NewsView(QWidget *parent) : QWidget(parent)
{
    // Without a page there is nothing for the keyboard, but there is a place in the order of Tab.
    setFocusPolicy(Qt::TabFocus);
    setEnabled(false);
}

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
    setEnabled(true);
    m_previous = previousInFocusChain();
    setFocusPolicy(Qt::NoFocus);
    keepTabPlace();
    m_page->widget()->installEventFilter(this);
    m_page->widget()->setAccessibleName(tr("News"));
    m_page->widget()->setGeometry(rect());
    m_page->widget()->show();
    if (m_url.isValid())
        m_page->load(m_url);
}

// What has the keyboard in the page comes where the view was meant to be, for which it stands.
void NewsView::keepTabPlace()
{
    QWidget *content = m_page->widget();
    while (content->focusProxy())
        content = content->focusProxy();
    if (m_previous)
        setTabOrder(m_previous, content);
}

// The engine makes a widget for each of its processes, which comes at the end of the order.
bool NewsView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ChildAdded)
        QTimer::singleShot(0, this, &NewsView::keepTabPlace);
    return QWidget::eventFilter(watched, event);
}

bool NewsView::decide(const QUrl &url)
{
    Decision decision;
    if (m_policyDelegate)
        m_policyDelegate->webViewDecidePolicyForNavigationAction(url, decision);
    return decision.isUsed();
}
