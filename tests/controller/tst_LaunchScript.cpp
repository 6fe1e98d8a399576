#include "TestMain.h"
#include "controller/LaunchScript.h"
#include "platform/ShellTask.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(LaunchScript)

namespace {

LaunchScript plainScript()
{
    return {QStringLiteral("cookie"), QStringLiteral("game.example:7777"), false,
            QStringLiteral("/data/Game/Quellmoor")};
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestLaunchScript : public QObject
{
    Q_OBJECT

private slots:
    void isWrittenToTheLetter_data();
    void isWrittenToTheLetter();
    void handsThePlainValuesToTheGame();
};

void TestLaunchScript::isWrittenToTheLetter_data()
{
    QTest::addColumn<LaunchScript>("script");
    QTest::addColumn<QString>("text");

    LaunchScript script = plainScript();
    QTest::newRow("no environment")
        << script
        << QStringLiteral(
               "export VARNO_PLAYCOOKIE=cookie\n export VARNO_GAMESERVER=game.example:7777\n"
               " export DYLD_FRAMEWORK_PATH=Frameworks/\n"
               " export DYLD_LIBRARY_PATH=libs/\n \n /data/Game/Quellmoor\n");
    script.isDevelopmentRun = true;
    QTest::newRow("an environment, empty or not")
        << script
        << QStringLiteral(
               "export VARNO_PLAYCOOKIE=cookie\n export VARNO_GAMESERVER=game.example:7777\n"
               " export DYLD_FRAMEWORK_PATH=Frameworks/\n"
               " export DYLD_LIBRARY_PATH=libs/\n export VARNO_DEV=YES\n"
               " /data/Game/Quellmoor\n");
    script = plainScript();
    script.playCookie.reset();
    script.gameserver.reset();
    QTest::newRow("missing values")
        << script
        << QStringLiteral("export VARNO_PLAYCOOKIE=(null)\n export VARNO_GAMESERVER=(null)\n"
                          " export DYLD_FRAMEWORK_PATH=Frameworks/\n"
                          " export DYLD_LIBRARY_PATH=libs/\n \n /data/Game/Quellmoor\n");
    script = plainScript();
    script.gameExecutable = QStringLiteral("/My Data (old)/Game/Quell moor (2)$&'\"");
    QTest::newRow("blanks and round brackets in the path, and what is not escaped")
        << script
        << QStringLiteral(
               "export VARNO_PLAYCOOKIE=cookie\n export VARNO_GAMESERVER=game.example:7777\n"
               " export DYLD_FRAMEWORK_PATH=Frameworks/\n"
               " export DYLD_LIBRARY_PATH=libs/\n \n"
               " /My\\ Data\\ \\(old\\)/Game/Quell\\ moor\\ \\(2\\)$&'\"\n");
    script = plainScript();
    script.playCookie = QStringLiteral("%1 %2 $x");
    QTest::newRow("values as they are")
        << script
        << QStringLiteral(
               "export VARNO_PLAYCOOKIE=%1 %2 $x\n export VARNO_GAMESERVER=game.example:7777\n"
               " export DYLD_FRAMEWORK_PATH=Frameworks/\n"
               " export DYLD_LIBRARY_PATH=libs/\n \n /data/Game/Quellmoor\n");
}

void TestLaunchScript::isWrittenToTheLetter()
{
    QFETCH(LaunchScript, script);
    QFETCH(QString, text);
    QCOMPARE(script.text(), text);
}

void TestLaunchScript::handsThePlainValuesToTheGame()
{
    const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/game (of) XXXXXX"));
    LaunchScript script = plainScript();
    script.isDevelopmentRun = true;
    script.gameExecutable = folder.filePath(QStringLiteral("Quell moor"));
    QFile game(script.gameExecutable);
    QVERIFY(game.open(QIODevice::WriteOnly));
    game.write("#!/bin/sh\n"
               "printf '%s|' \"$VARNO_PLAYCOOKIE\" \"$VARNO_GAMESERVER\" \"$DYLD_FRAMEWORK_PATH\" "
               "\"$DYLD_LIBRARY_PATH\" \"$VARNO_DEV\" \"$PWD\" > seen\n");
    game.close();
    QVERIFY(game.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    ShellTask task(script.text(), folder.path());
    QVERIFY(!task.launch());
    task.waitUntilExit();
    QCOMPARE(
        QString::fromUtf8(contentsOf(folder.filePath(QStringLiteral("seen")))),
        QStringLiteral("cookie|game.example:7777|Frameworks/|libs/|YES|%1|").arg(folder.path()));
}

QUELLMOOR_TEST(TestLaunchScript, "LaunchScript")
#include "tst_LaunchScript.moc"
