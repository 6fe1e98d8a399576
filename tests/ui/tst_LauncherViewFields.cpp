#include "LogCapture.h"
#include "TestMain.h"
#include "ViewWorld.h"
#include "ui/TextLabel.h"

#include <QApplication>
#include <QTest>

namespace {

// Counts how often text fields lose the keyboard, and how often somebody is told of it.
class FieldsAtTheEnd final : public QObject
{
public:
    explicit FieldsAtTheEnd(const QList<TextField *> &fields)
    {
        for (TextField *field : fields)
            field->installEventFilter(this);
    }
    bool eventFilter(QObject *field, QEvent *event) override
    {
        if (event->type() == QEvent::FocusOut) {
            ++heard;
            told += static_cast<TextField *>(field)->delegate() ? 1 : 0;
        }
        return false;
    }
    int heard = 0;
    int told = 0;
};

} // namespace

// What the launcher view does when the player types into its fields.
class TestLauncherViewFields : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_world = std::make_unique<ViewWorld>(); }
    void cleanup() { m_world.reset(); }

    void returnInTheAccountFieldMovesToThePassword();
    void returnInThePasswordFieldLogsInEvenWhilePlayIsDisabled();
    void logsInAtNoOtherEndOfEditing_data();
    void logsInAtNoOtherEndOfEditing();
    void tellsBothTextsAtEachKeystroke();
    void ignoresReturnFromTheStatusLine();
    void logsReturnFromAnUnknownField();
    void livesWithoutADelegate();
    void hearsNothingFromItsFieldsWhenItEnds();

private:
    [[nodiscard]] TextField &account() const { return *m_world->view->accountIDField(); }
    [[nodiscard]] TextField &password() const { return *m_world->view->passwordField(); }

    std::unique_ptr<ViewWorld> m_world;
};

void TestLauncherViewFields::returnInTheAccountFieldMovesToThePassword()
{
    m_world->showWindow();
    account().becomeFirstResponder();
    QTest::keyClick(&account(), Qt::Key_Return);
    QVERIFY(password().hasFocus());
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherViewFields::returnInThePasswordFieldLogsInEvenWhilePlayIsDisabled()
{
    m_world->showWindow();
    m_world->view->setPlayButtonEnabled(false);
    account().setStringValue(QStringLiteral("pat"));
    password().setStringValue(QStringLiteral("secret"));
    password().becomeFirstResponder();
    QTest::keyClick(&password(), Qt::Key_Return);
    QCOMPARE(m_world->delegate.calls, QStringList{QStringLiteral("login pat|secret")});
}

void TestLauncherViewFields::logsInAtNoOtherEndOfEditing_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<int>("key"); // none: the keyboard is taken away
    QTest::addColumn<QString>("next");
    const QString account = QStringLiteral("accountIDField");
    const QString password = QStringLiteral("passwordField");
    QTest::newRow("Tab in the account") << account << int(Qt::Key_Tab) << password;
    QTest::newRow("Backtab in the account")
        << account << int(Qt::Key_Backtab) << QStringLiteral("newsPage");
    QTest::newRow("Escape in the account") << account << int(Qt::Key_Escape) << account;
    QTest::newRow("taken from the account") << account << 0 << QString();
    QTest::newRow("Tab in the password")
        << password << int(Qt::Key_Tab) << QStringLiteral("playButton");
    QTest::newRow("Backtab in the password") << password << int(Qt::Key_Backtab) << account;
    QTest::newRow("Escape in the password") << password << int(Qt::Key_Escape) << password;
    QTest::newRow("taken from the password") << password << 0 << QString();
}

void TestLauncherViewFields::logsInAtNoOtherEndOfEditing()
{
    QFETCH(QString, field);
    QFETCH(int, key);
    m_world->showWindow();
    auto &edited = m_world->child<TextField>(field.toLatin1().constData());
    edited.becomeFirstResponder();
    if (key)
        QTest::keyClick(&edited, Qt::Key(key));
    else
        edited.resignFirstResponder();
    const QWidget *const focused = QApplication::focusWidget();
    QTEST(focused ? focused->objectName() : QString(), "next");
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherViewFields::tellsBothTextsAtEachKeystroke()
{
    QTest::keyClicks(&account(), QStringLiteral("ab"));
    QTest::keyClick(&password(), Qt::Key_X);
    QCOMPARE(m_world->delegate.calls,
             (QStringList{QStringLiteral("update a|"), QStringLiteral("update ab|"),
                          QStringLiteral("update ab|x")}));
}

void TestLauncherViewFields::ignoresReturnFromTheStatusLine()
{
    const LogCapture log;
    m_world->view->controlTextDidEndEditing(&m_world->child<TextLabel>("statusLabel"),
                                            TextMovement::Return);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherViewFields::logsReturnFromAnUnknownField()
{
    const LogCapture log;
    TextField other;
    m_world->view->controlTextDidEndEditing(&other, TextMovement::Tab);
    m_world->view->controlTextDidEndEditing(&other, TextMovement::Return);
    QCOMPARE(log.lines(), QStringList{QStringLiteral(
                              "Did you add a new textfield? This should not be called.")});
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherViewFields::livesWithoutADelegate()
{
    m_world->view->setDelegate(nullptr);
    QTest::keyClicks(&account(), QStringLiteral("a"));
    m_world->view->playPressed(nullptr);
    QCOMPARE(m_world->delegate.calls, QStringList());
}

// A view that is a window loses the keyboard while it is taken down.
void TestLauncherViewFields::hearsNothingFromItsFieldsWhenItEnds()
{
    LauncherView *const view = m_world->view;
    view->setParent(nullptr);
    view->show();
    view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(view));
    account().becomeFirstResponder();
    QVERIFY(account().hasFocus());
    const FieldsAtTheEnd fields({&account(), &password()});
    delete view;
    QCOMPARE(fields.heard, 1);
    QCOMPARE(fields.told, 0);
}

QUELLMOOR_TEST(TestLauncherViewFields, "LauncherViewFields")
#include "tst_LauncherViewFields.moc"
