#include "platform/TouchBar.h"

#include "platform/linux/TouchBarStrip.h"

CustomTouchBarItem::CustomTouchBarItem(QString identifier) : m_identifier(std::move(identifier)) {}

CustomTouchBarItem::~CustomTouchBarItem() { delete m_view; }

void CustomTouchBarItem::setView(std::unique_ptr<QWidget> view)
{
    delete m_view;
    m_view = view.release();
}

QWidget *CustomTouchBarItem::view() const { return m_view; }

QString TouchBar::otherItemsProxyIdentifier()
{
    return QStringLiteral("NSTouchBarItemIdentifierOtherItemsProxy");
}

namespace {

class StripHost final : public TouchBarHost
{
public:
    StripHost(QWidget &window, int gap) : m_strip(new TouchBarStrip(window, gap)) {}

    // The window, whose child it is, may have gone first.
    ~StripHost() override { delete m_strip; }

    void setTouchBar(const TouchBar &touchBar) override
    {
        m_items.clear();
        for (const QString &identifier : touchBar.defaultItemIdentifiers) {
            // This system has no items of its own to put there.
            if (!touchBar.delegate || identifier == TouchBar::otherItemsProxyIdentifier())
                continue;
            auto item = touchBar.delegate->touchBarMakeItemForIdentifier(touchBar, identifier);
            if (item && item->view())
                m_items.push_back(std::move(item));
        }
        if (!m_strip)
            return;
        QList<QWidget *> views;
        for (const auto &item : m_items)
            views += item->view();
        m_strip->setViews(views);
    }

private:
    const QPointer<TouchBarStrip> m_strip;
    std::vector<std::unique_ptr<CustomTouchBarItem>> m_items;
};

} // namespace

std::unique_ptr<TouchBarHost> makeTouchBarHost(QWidget &window, int gap)
{
    return std::make_unique<StripHost>(window, gap);
}
