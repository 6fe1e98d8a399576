#include "Contrast.h"
#include "TestMain.h"
#include "ViewWorld.h"
#include "ui/RolloverButton.h"
#include "ui/TextField.h"
#include "ui/TextLabel.h"

#include <QImage>
#include <QTest>

namespace {

constexpr double EnoughContrast = 4.5;

// The parts that differ, and a dot around each: what the eye takes for the ground of a letter.
QList<QPoint> letters(const QImage &with, const QImage &without, const QRect &area)
{
    QList<QPoint> result;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            for (const QPoint &next : {QPoint(x, y), QPoint(x - 1, y), QPoint(x + 1, y),
                                       QPoint(x, y - 1), QPoint(x, y + 1)})
                if (area.contains(next) && with.pixel(next) != without.pixel(next)) {
                    result += QPoint(x, y);
                    break;
                }
    return result;
}

} // namespace

// Texts stand on pictures, so what they can be read against is looked up on the screen.
class TestContrast : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void statusIsReadableWhereverItMayStand_data();
    void statusIsReadableWhereverItMayStand();
    void captionsAreReadable_data();
    void captionsAreReadable();
    void notesAreReadable_data();
    void notesAreReadable();
    void placeholdersAndTextsAreReadable_data();
    void placeholdersAndTextsAreReadable();

private:
    [[nodiscard]] QImage screen() const { return m_world->window.grab().toImage(); }
    // The least contrast of the letters that stand in the first picture and not in the second.
    [[nodiscard]] double least(const QImage &with, const QImage &without, const QWidget &at) const;

    std::unique_ptr<ViewWorld> m_world;
};

void TestContrast::init()
{
    m_world = std::make_unique<ViewWorld>();
    m_world->showWindow();
    m_world->view->hideLoginForm(false);
    ViewWorld::runMainQueue();
}

void TestContrast::cleanup() { m_world.reset(); }

double TestContrast::least(const QImage &with, const QImage &without, const QWidget &at) const
{
    const QRect area(at.mapTo(&m_world->window, QPoint(0, 0)), at.size());
    QRgb letter = 0;
    double most = 0;
    const QList<QPoint> places = letters(with, without, area);
    for (const QPoint &place : places)
        if (const double here = contrast(with.pixel(place), without.pixel(place)); here > most) {
            most = here;
            letter = with.pixel(place);
        }
    double result = most;
    for (const QPoint &place : places)
        result = std::min(result, contrast(letter, without.pixel(place)));
    return result;
}

void TestContrast::statusIsReadableWhereverItMayStand_data()
{
    QTest::addColumn<bool>("isUpdating");
    QTest::newRow("login form") << false;
    QTest::newRow("progress") << true;
}

void TestContrast::statusIsReadableWhereverItMayStand()
{
    QFETCH(bool, isUpdating);
    m_world->view->hideLoginForm(isUpdating);
    m_world->view->swordsmenImage()->setHidden(!isUpdating);
    ViewWorld::runMainQueue();
    auto &label = m_world->child<TextLabel>("statusLabel");
    label.setStringValue(QString());
    const QImage without = screen();
    // Three full lines of letters that leave little room between them.
    label.setStringValue(QStringLiteral("mWgÄ").repeated(60));
    const double found = least(screen(), without, label);
    QVERIFY2(found >= EnoughContrast, qPrintable(QString::number(found)));
}

void TestContrast::captionsAreReadable_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("picture");
    for (const char *name : {"forgotPasswordButton", "createAccountButton", "websiteButton",
                             "supportButton", "communityButton", "manageButton",
                             "playersGuideButton", "releaseNotesButton", "playButton"}) {
        QTest::addRow("%s", name) << QString::fromLatin1(name) << QString();
        QTest::addRow("%s hovered", name) << QString::fromLatin1(name) << QStringLiteral("hover");
    }
    QTest::newRow("play pressed") << QStringLiteral("playButton") << QStringLiteral("press");
    QTest::newRow("play disabled") << QStringLiteral("playButton") << QStringLiteral("disable");
}

void TestContrast::captionsAreReadable()
{
    QFETCH(QString, button);
    QFETCH(QString, picture);
    auto &control = m_world->child<RolloverButton>(button.toLatin1().constData());
    if (picture == QStringLiteral("hover"))
        control.mouseEntered();
    else if (picture == QStringLiteral("press"))
        control.setDown(true);
    else if (picture == QStringLiteral("disable"))
        m_world->view->setPlayButtonEnabled(false);
    const QImage with = screen();
    control.setText(QString());
    const double found = least(with, screen(), control);
    QVERIFY2(found >= EnoughContrast, qPrintable(QString::number(found)));
}

void TestContrast::notesAreReadable_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("launcher") << QStringLiteral("launcherVersionLabel");
    QTest::newRow("server") << QStringLiteral("serverVersionLabel");
}

void TestContrast::notesAreReadable()
{
    QFETCH(QString, name);
    auto &label = m_world->child<TextLabel>(name.toLatin1().constData());
    label.setStringValue(QString());
    const QImage without = screen();
    label.setStringValue(QStringLiteral("Server v7.30.0-Wm"));
    const double found = least(screen(), without, label);
    QVERIFY2(found >= EnoughContrast, qPrintable(QString::number(found)));
}

void TestContrast::placeholdersAndTextsAreReadable_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("account") << QStringLiteral("accountIDField");
    QTest::newRow("password") << QStringLiteral("passwordField");
}

void TestContrast::placeholdersAndTextsAreReadable()
{
    QFETCH(QString, name);
    auto &field = m_world->child<TextField>(name.toLatin1().constData());
    field.clearFocus();
    const QImage placeholder = screen();
    field.setPlaceholderText(QString());
    const QImage without = screen();
    field.setStringValue(QStringLiteral("wren"));
    const double found =
        std::min(least(placeholder, without, field), least(screen(), without, field));
    QVERIFY2(found >= EnoughContrast, qPrintable(QString::number(found)));
}

QUELLMOOR_TEST(TestContrast, "Contrast")
#include "tst_Contrast.moc"
