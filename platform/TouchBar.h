#pragma once

#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>

class QWidget;
struct TouchBar;

// One item of a Touch Bar that shows a view of ours. Owns the view, wherever a host has put it.
// Main thread only.
class CustomTouchBarItem
{
public:
    explicit CustomTouchBarItem(QString identifier);
    ~CustomTouchBarItem();
    CustomTouchBarItem(const CustomTouchBarItem &) = delete;
    CustomTouchBarItem &operator=(const CustomTouchBarItem &) = delete;

    // Takes the place of the earlier view, which is deleted.
    void setView(std::unique_ptr<QWidget> view);
    // What the item is called where the player arranges the bar.
    void setCustomizationLabel(const QString &label) { m_customizationLabel = label; }

    [[nodiscard]] const QString &identifier() const { return m_identifier; }
    // Null without one.
    [[nodiscard]] QWidget *view() const;
    [[nodiscard]] const QString &customizationLabel() const { return m_customizationLabel; }

private:
    const QString m_identifier;
    QPointer<QWidget> m_view;
    QString m_customizationLabel;
};

// Makes the items of a bar when a host needs them. Main thread.
class TouchBarDelegate
{
public:
    virtual ~TouchBarDelegate() = default;
    // Null for no item; the bar then shows the others.
    virtual std::unique_ptr<CustomTouchBarItem>
    touchBarMakeItemForIdentifier(const TouchBar &touchBar, const QString &identifier) = 0;
};

// What a bar shows, as plain data: items by their identifiers, left to right.
struct TouchBar
{
    // Stands for whatever the system itself puts there.
    static QString otherItemsProxyIdentifier();

    // Outlives the bar and every host that shows it; null for a bar without items of ours.
    TouchBarDelegate *delegate = nullptr;
    QString customizationIdentifier;
    QStringList defaultItemIdentifiers;
    // Those that the player may take out and put back.
    QStringList customizationAllowedItemIdentifiers;
};

// Where a bar is shown. Main thread only.
class TouchBarHost
{
public:
    virtual ~TouchBarHost() = default;
    // Asks the bar's delegate for the items, once each, and shows them in place of the bar before,
    // whose items are deleted.
    virtual void setTouchBar(const TouchBar &touchBar) = 0;
};

// The host of that window, which must outlive it. Where the hardware has no bar this is a strip
// right below the window, which moves, hides and comes back with it and never takes the keyboard;
// `gap` is how far below the window's lower edge it begins, in points, less than nothing for a
// window whose edge is a shadow.
std::unique_ptr<TouchBarHost> makeTouchBarHost(QWidget &window, int gap);
