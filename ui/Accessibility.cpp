#include "ui/Accessibility.h"

#include "ui/AlertPanel.h"
#include "ui/CustomTouchBarView.h"
#include "ui/CustomWindow.h"
#include "ui/LauncherView.h"
#include "ui/PictureView.h"
#include "ui/VARNOProgressView.h"

#include <QAccessibleWidget>
#include <QLabel>

namespace {

constexpr auto SpokenProperty = "isSpoken";

// Something with parts. Decoration and what has no place on the screen are none: they would stand
// between the pointer and the controls, and nobody wants to hear of them.
class Pane final : public QAccessibleWidget
{
public:
    using QAccessibleWidget::QAccessibleWidget;

    [[nodiscard]] int childCount() const override { return int(parts().size()); }
    [[nodiscard]] QAccessibleInterface *child(int index) const override
    {
        return QAccessible::queryAccessibleInterface(parts().value(index));
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        return child ? int(parts().indexOf(child->object())) : -1;
    }

private:
    [[nodiscard]] QObjectList parts() const
    {
        QObjectList result;
        const auto children =
            widget()->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        for (QWidget *child : children)
            if (!child->isWindow() && !child->size().isEmpty() &&
                !qobject_cast<PictureView *>(child))
                result += child;
        return result;
    }
};

class Bar final : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit Bar(VARNOProgressView &view)
        : QAccessibleWidget(&view, QAccessible::ProgressBar), m_view(view)
    {
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State result = QAccessibleWidget::state();
        result.readOnly = true;
        return result;
    }

    [[nodiscard]] QVariant currentValue() const override { return m_view.value(); }
    void setCurrentValue(const QVariant &) override {}
    [[nodiscard]] QVariant minimumValue() const override { return 0.0; }
    [[nodiscard]] QVariant maximumValue() const override { return 1.0; }
    [[nodiscard]] QVariant minimumStepSize() const override { return 0.0; }

private:
    const VARNOProgressView &m_view;
};

// Screen readers speak a notification as soon as they hear that it shows, and a plain label only
// when the player goes and looks for it.
class Label final : public QAccessibleWidget
{
public:
    explicit Label(QLabel &label) : QAccessibleWidget(&label), m_label(label) {}

    [[nodiscard]] QAccessible::Role role() const override
    {
        return Accessibility::isSpoken(m_label) ? QAccessible::Notification
                                                : QAccessible::StaticText;
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? m_label.text() : QAccessibleWidget::text(kind);
    }
    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State result = QAccessibleWidget::state();
        result.readOnly = true;
        return result;
    }

private:
    const QLabel &m_label;
};

// Null for what Qt describes well enough by itself.
QAccessibleInterface *describe(const QString &, QObject *object)
{
    auto *widget = qobject_cast<QWidget *>(object);
    if (!widget)
        return nullptr;
    if (auto *bar = qobject_cast<VARNOProgressView *>(widget))
        return new Bar(*bar);
    if (auto *label = qobject_cast<QLabel *>(widget); label && label->windowType() != Qt::ToolTip)
        return new Label(*label);
    if (qobject_cast<AlertPanel *>(widget))
        return new Pane(widget, QAccessible::Dialog);
    if (qobject_cast<LauncherView *>(widget) || qobject_cast<CustomTouchBarView *>(widget) ||
        qobject_cast<NewsView *>(widget))
        return new Pane(widget, QAccessible::Pane);
    const bool isWindow = qobject_cast<CustomWindow *>(widget) || widget->windowType() == Qt::Tool;
    return isWindow ? new Pane(widget, QAccessible::Window) : nullptr;
}

} // namespace

namespace Accessibility {

// On Linux the web engine describes its pages only when it is told to.
void openWebPages() { qputenv("QTWEBENGINE_ENABLE_LINUX_ACCESSIBILITY", "1"); }

void install() { QAccessible::installFactory(describe); }

void makeSpoken(QLabel &label) { label.setProperty(SpokenProperty, true); }

bool isSpoken(const QLabel &label) { return label.property(SpokenProperty).toBool(); }

void speak(QLabel &label)
{
    if (!label.isVisible())
        return;
    QAccessibleEvent shows(&label, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shows);
}

} // namespace Accessibility
