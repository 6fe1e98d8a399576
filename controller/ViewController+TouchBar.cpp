// The Touch Bar: what it shows, the strip of ours in it, and when that offers play.
#include "account/LocalAuthenticationHandler.h"
#include "controller/ViewController.h"
#include "ui/CustomTouchBarView.h"
#include "ui/LauncherView.h"

namespace {

const auto CustomViewIdentifier = QStringLiteral("com.TouchBarCatalog.customView");
const auto BarIdentifier = QStringLiteral("com.TouchBarCatalog.customViewViewController");

} // namespace

TouchBar ViewController::makeTouchBar()
{
    TouchBar bar;
    bar.delegate = this;
    bar.customizationIdentifier = BarIdentifier;
    bar.defaultItemIdentifiers = {CustomViewIdentifier, TouchBar::otherItemsProxyIdentifier()};
    bar.customizationAllowedItemIdentifiers = {CustomViewIdentifier};
    return bar;
}

// There is one item only, so it is what every request gets, whatever it asks for.
std::unique_ptr<CustomTouchBarItem> ViewController::touchBarMakeItemForIdentifier(const TouchBar &,
                                                                                  const QString &)
{
    auto view =
        loadWithNibNamed(QStringLiteral("CustomTouchBar"), CustomTouchBarView::staticMetaObject);
    if (!view)
        return nullptr;
    auto *strip = static_cast<CustomTouchBarView *>(view.get());
    strip->setServices(m_services.configuration, m_services.workspace);
    strip->awakeFromNib();
    m_touchBarViewOrNil = strip;
    strip->setLauncherView(&m_launcherView);

    auto item = std::make_unique<CustomTouchBarItem>(CustomViewIdentifier);
    item->setView(std::move(view));
    item->setCustomizationLabel(QStringLiteral("VARNO"));
    return item;
}

CustomTouchBarView *ViewController::touchBarViewOrNil() const { return m_touchBarViewOrNil; }

void ViewController::setPlayable(bool isPlayable)
{
    if (m_touchBarViewOrNil)
        m_touchBarViewOrNil->setPlayable(isPlayable);
}

void ViewController::textFieldUpdate(const QString &username, const QString &password)
{
    // With a finger set up, empty fields are filled in from what is stored.
    const bool isFilledIn = !username.isEmpty() && !password.isEmpty();
    setPlayable(isFilledIn || m_services.localAuthentication.isTouchIDEnabled());
}

void ViewController::enableTouchID(QObject *) { m_services.localAuthentication.resetTouchID(); }
