#include "LogCapture.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "platform/ActivationPolicy.h"
#include "platform/Workspace.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QFile>
#include <QTest>
#include <QThread>
#include <QUrl>

// Takes the place of the player's programs.
class Programs : public QObject
{
    Q_OBJECT

public:
    Programs()
    {
        for (const char *scheme : {"https", "http", "mailto", "file"})
            QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "take");
    }
    ~Programs() override
    {
        for (const char *scheme : {"https", "http", "mailto", "file"})
            QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
    }

    QStringList opened;
    QList<QThread *> threads;

public slots:
    void take(const QUrl &url)
    {
        opened += url.toString(QUrl::FullyEncoded);
        threads += QThread::currentThread();
    }
};

class TestDesktop : public QObject
{
    Q_OBJECT

private slots:
    void opensUrlsOfTheWebAndMail_data();
    void opensUrlsOfTheWebAndMail();
    void refusesOtherUrlsAndLogsThem_data();
    void refusesOtherUrlsAndLogsThem();
    void opensOnTheMainThreadForOthers();
    void opensImagesWithTheMounterOfTheDesktop();
    void opensFilesWithTheDefaultProgramOtherwise();

    void hidesEveryWindowForTheGame();
    void showsOnlyTheWindowsThatItHid();
    void keepsAQuestionOnTheScreen();
    void staysRunningWithoutAWindow();
};

void TestDesktop::opensUrlsOfTheWebAndMail_data()
{
    QTest::addColumn<QString>("url");
    for (const char *url : {"https://www.test/play/?update=1", "http://www.test/",
                            "HTTPS://www.test", "mailto:help@www.test"})
        QTest::newRow(url) << QString::fromLatin1(url);
}

void TestDesktop::opensUrlsOfTheWebAndMail()
{
    QFETCH(QString, url);
    const Programs programs;
    QVERIFY(makeWorkspace()->openURL(QUrl(url)));
    QCOMPARE(programs.opened, QStringList{QUrl(url).toString(QUrl::FullyEncoded)});
}

void TestDesktop::refusesOtherUrlsAndLogsThem_data()
{
    QTest::addColumn<QString>("url");
    for (const char *url : {"file:///etc/passwd", "javascript:alert(1)", "smb://host/share",
                            "x-launcher:do", "/etc/passwd", "data:text/html,x", ""})
        QTest::newRow(*url ? url : "nothing") << QString::fromLatin1(url);
}

void TestDesktop::refusesOtherUrlsAndLogsThem()
{
    QFETCH(QString, url);
    const LogCapture log;
    const Programs programs;
    QVERIFY(!makeWorkspace()->openURL(QUrl(url)));
    QCOMPARE(programs.opened, QStringList());
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(
        log.lines().first().startsWith(QStringLiteral("+[ErrorHandler log:] [line 14]: Refused")));
}

void TestDesktop::opensOnTheMainThreadForOthers()
{
    const Programs programs;
    const auto workspace = makeWorkspace();
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { workspace->openURL(QUrl(QStringLiteral("https://www.test/"))); }));
    thread->start();
    QVERIFY(thread->wait());
    QCOMPARE(programs.opened, QStringList());
    QTRY_COMPARE(programs.threads, QList{qApp->thread()});
}

void TestDesktop::opensImagesWithTheMounterOfTheDesktop()
{
    const TestFolder folder;
    folder.write(QStringLiteral("bin/gnome-disk-image-mounter"),
                 "#!/bin/sh\nprintf %s \"$1\" > \"$0.part\" && mv \"$0.part\" \"$0.called\"\n");
    folder.setMode(QStringLiteral("bin/gnome-disk-image-mounter"), 0755);
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", folder.path(QStringLiteral("bin")).toLocal8Bit() + ':' + path);
    const Programs programs;
    QVERIFY(makeWorkspace()->openFile(QStringLiteral("/tmp/an image; rm.dmg"),
                                      QStringLiteral("DiskImageMounter")));
    qputenv("PATH", path);
    QTRY_COMPARE(folder.read(QStringLiteral("bin/gnome-disk-image-mounter.called")),
                 QByteArrayLiteral("/tmp/an image; rm.dmg"));
    QCOMPARE(programs.opened, QStringList());
}

void TestDesktop::opensFilesWithTheDefaultProgramOtherwise()
{
    const TestFolder empty;
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", empty.path().toLocal8Bit());
    const Programs programs;
    const auto workspace = makeWorkspace();
    QVERIFY(workspace->openFile(QStringLiteral("/tmp/a.dmg"), QStringLiteral("DiskImageMounter")));
    QVERIFY(workspace->openFile(QStringLiteral("/tmp/b.txt"), QStringLiteral("NoSuchProgram")));
    qputenv("PATH", path);
    QCOMPARE(programs.opened, (QStringList{QStringLiteral("file:///tmp/a.dmg"),
                                           QStringLiteral("file:///tmp/b.txt")}));
}

void TestDesktop::hidesEveryWindowForTheGame()
{
    using Policy = ActivationPolicy::Policy;
    QWidget first;
    QWidget second;
    first.show();
    second.show();
    const auto policy = makeActivationPolicy();
    policy->setActivationPolicy(Policy::Accessory);
    policy->setActivationPolicy(Policy::Accessory);
    QVERIFY(!first.isVisible() && !second.isVisible());
    policy->setActivationPolicy(Policy::Regular);
    policy->activateIgnoringOtherApps();
    QVERIFY(first.isVisible() && second.isVisible());
    QTRY_VERIFY(first.isActiveWindow() || second.isActiveWindow());
}

void TestDesktop::showsOnlyTheWindowsThatItHid()
{
    using Policy = ActivationPolicy::Policy;
    QWidget shown;
    QWidget hidden;
    auto gone = std::make_unique<QWidget>();
    shown.show();
    gone->show();
    const auto policy = makeActivationPolicy();
    policy->setActivationPolicy(Policy::Accessory);
    gone.reset();
    policy->setActivationPolicy(Policy::Regular);
    QVERIFY(shown.isVisible());
    QVERIFY(!hidden.isVisible());
}

void TestDesktop::keepsAQuestionOnTheScreen()
{
    QWidget window;
    window.show();
    QDialog dialog(&window);
    int answers = 0;
    connect(&dialog, &QDialog::finished, this, [&] { ++answers; });
    dialog.open();
    makeActivationPolicy()->setActivationPolicy(ActivationPolicy::Policy::Accessory);
    QVERIFY(!window.isVisible());
    QVERIFY(dialog.isVisible());
    QCOMPARE(answers, 0);
}

void TestDesktop::staysRunningWithoutAWindow()
{
    QApplication::setQuitOnLastWindowClosed(true);
    makeActivationPolicy();
    QVERIFY(!QApplication::quitOnLastWindowClosed());
}

QUELLMOOR_TEST(TestDesktop, "Desktop")
#include "tst_Desktop.moc"
