#include "TestMain.h"
#include "ViewWorld.h"
#include "ui/CustomTouchBarView.h"
#include "ui/FingerprintPanel.h"
#include "ui/InterfaceLoader.h"
#include "ui/LauncherMenu.h"
#include "ui/NewsPage.h"
#include "ui/TextField.h"
#include "ui/VARNOProgressView.h"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QTextBrowser>

#include <functional>

namespace {

// As desktops set them: one for everything, and others for some kinds of widgets.
void setDesktopFont(const QFont &font)
{
    QApplication::setFont(font);
    for (const char *kind :
         {"QMenu", "QLabel", "QPushButton", "QLineEdit", "QTextBrowser", "QTextEdit"})
        QApplication::setFont(font, kind);
}

QImage form()
{
    const ViewWorld world;
    world.view->accountIDField()->setStringValue(QStringLiteral("wren"));
    world.view->setServerVersion(QStringLiteral("7.3.0"));
    world.view->setStatus(
        QStringLiteral("504: The user name or the password is wrong. ").repeated(3));
    ViewWorld::runMainQueue();
    return world.view->grab().toImage();
}

QImage update()
{
    const ViewWorld world;
    world.view->hideLoginForm(true);
    world.view->patcherProgressBar()->setValue(0.5);
    world.view->setStatus(QStringLiteral("Updating file 3 of 12...\narchive.bin\n[4.2/18.0MB]"));
    ViewWorld::runMainQueue();
    return world.view->grab().toImage();
}

QImage shown(QWidget &panel)
{
    panel.ensurePolished();
    panel.adjustSize();
    return panel.grab().toImage();
}

QImage sheet()
{
    AlertPanel panel({QStringLiteral("Two-step Authentication"),
                      QStringLiteral("503: Enter your two-step token."),
                      {QStringLiteral("Confirm"), QStringLiteral("Cancel")}},
                     AlertTextField(), nullptr);
    panel.findChild<TextField *>()->setStringValue(QStringLiteral("123456"));
    return shown(panel);
}

QImage fingerprintSheet()
{
    FingerprintPanel panel(QStringLiteral("Login to Quellmoor"), nullptr);
    return shown(panel);
}

QImage menu()
{
    QWidget window;
    LauncherMenu menu(&window);
    return shown(menu);
}

QImage strip()
{
    ViewWorld world;
    const std::unique_ptr<QWidget> loaded(InterfaceLoader().load(QStringLiteral("CustomTouchBar")));
    auto &view = static_cast<CustomTouchBarView &>(*loaded);
    view.setServices(world.configuration, world.workspace);
    view.awakeFromNib();
    view.setPlayable(true);
    return view.grab().toImage();
}

QImage textNews()
{
    OneAnswerHttpClient httpClient;
    QWidget place;
    const auto page = textNewsPages(httpClient)(&place, [](const QUrl &) { return false; });
    auto *browser = qobject_cast<QTextBrowser *>(page->widget());
    browser->setHtml(QStringLiteral("<h1>News</h1><p>From the moor, <a href='x'>and more</a></p>"));
    browser->resize(500, 300);
    return browser->grab().toImage();
}

} // namespace

using Drawing = std::function<QImage()>;
Q_DECLARE_METATYPE(Drawing)

// Sizes are the artwork's: whatever font the desktop has, everything looks the same.
class TestDesktopFont : public QObject
{
    Q_OBJECT

private slots:
    void changesNothing_data();
    void changesNothing();
};

void TestDesktopFont::changesNothing_data()
{
    QTest::addColumn<Drawing>("picture");
    QTest::newRow("form") << Drawing(form);
    QTest::newRow("update") << Drawing(update);
    QTest::newRow("sheet") << Drawing(sheet);
    QTest::newRow("fingerprint sheet") << Drawing(fingerprintSheet);
    QTest::newRow("menu") << Drawing(menu);
    QTest::newRow("strip") << Drawing(strip);
    QTest::newRow("text news") << Drawing(textNews);
}

void TestDesktopFont::changesNothing()
{
    QFETCH(const Drawing, picture);
    const QFont usual = QApplication::font();
    const QImage expected = picture();
    setDesktopFont(QFont(QStringLiteral("DejaVu Serif"), 20));
    const QImage seen = picture();
    const QSize label = QLabel(QStringLiteral("Login")).sizeHint();
    setDesktopFont(usual);
    QVERIFY(label.height() > QLabel(QStringLiteral("Login")).sizeHint().height());
    QCOMPARE(seen.size(), expected.size());
    QCOMPARE(seen, expected);
}

QUELLMOOR_TEST(TestDesktopFont, "DesktopFont")
#include "tst_DesktopFont.moc"
