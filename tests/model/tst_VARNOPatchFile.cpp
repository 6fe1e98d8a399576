#include "TestFolder.h"
#include "TestMain.h"
#include "WriteReport.h"
#include "model/VARNOPatchFile.h"
#include "platform/FileSystem.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

VARNOPatchFile patchNamed(const QString &name, const QString &localPath = u"/game/a"_s)
{
    return {name, localPath, u"1"_s, u"2"_s, u"https://h/mac/patches/"_s};
}

// A name that no other process has in the folder above.
QString outsideName() { return u"quellmoor%1_1_2.patch"_s.arg(QCoreApplication::applicationPid()); }

QStringList filesIn(const QString &path)
{
    return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class TestVARNOPatchFile : public QObject
{
    Q_OBJECT

private slots:
    void keepsWhatItIsMadeFrom();
    void isFetchedUnderItsUnchangedName_data();
    void isFetchedUnderItsUnchangedName();
    void isKeptInTheTemporaryDirectory();
    void keepsTheOldPatchWithoutData();
    void refusesANameThatIsNoFileName_data();
    void refusesANameThatIsNoFileName();
    void reportsAnErrorWhenAFolderIsInItsPlace();
    void preparesACommandWithBlanksEscaped();
    void neverChangesTheGameFile();
    void returnsAnEmptyTextForTheLog();

private:
    [[nodiscard]] static QString temporaryDirectory() { return FileSystem::temporaryDirectory(); }
};

void TestVARNOPatchFile::keepsWhatItIsMadeFrom()
{
    const auto patch = patchNamed(u"a_1_2.patch"_s, u"/game/a b"_s);
    QCOMPARE(QStringList({patch.name(), patch.fromHash(), patch.toHash(), patch.localPath(),
                          patch.filePath()}),
             QStringList({u"a_1_2.patch"_s, u"1"_s, u"2"_s, u"/game/a b"_s,
                          temporaryDirectory() + u"/a_1_2.patch"_s}));
}

void TestVARNOPatchFile::isFetchedUnderItsUnchangedName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("url");
    QTest::newRow("plain") << u"a_1_2.patch"_s << u"https://h/mac/patches/a_1_2.patch.bz2"_s;
    QTest::newRow("already encoded")
        << u"a%20b_1_2.patch"_s << u"https://h/mac/patches/a%20b_1_2.patch.bz2"_s;
    QTest::newRow("a folder in it") << u"data/a_1_2"_s << u"https://h/mac/patches/data/a_1_2.bz2"_s;
    for (const char16_t *name : {u"a b_1_2.patch", u"a<b_1_2", u"a%zz_1_2", u"a\"_1_2", u"a^_1_2",
                                 u"\u00e4_1_2.patch", u"a\n_1_2"})
        QTest::newRow(qPrintable(u"invalid: "_s + QString::fromUtf16(name).simplified()))
            << QString::fromUtf16(name) << QString();
}

void TestVARNOPatchFile::isFetchedUnderItsUnchangedName()
{
    QFETCH(QString, name);
    QFETCH(QString, url);
    const QUrl found = patchNamed(name).downloadURL();
    QCOMPARE(std::pair(found.isValid(), found.toString(QUrl::FullyEncoded)),
             std::pair(!url.isEmpty(), url));
}

void TestVARNOPatchFile::isKeptInTheTemporaryDirectory()
{
    auto patch = patchNamed(u"kept_1_2.patch"_s);
    WriteReport report;
    patch.writeToDisk("first"_ba, report.completion());
    patch.writeToDisk("second"_ba, report.completion());
    QFile kept(patch.filePath());
    QVERIFY(kept.open(QIODevice::ReadOnly));
    const auto line = u"kept_1_2.patch, no error, \"\""_s;
    QCOMPARE(std::pair(kept.readAll(), report.calls()),
             std::pair("second"_ba, QStringList({line, line})));
}

void TestVARNOPatchFile::keepsTheOldPatchWithoutData()
{
    auto patch = patchNamed(u"old_1_2.patch"_s);
    WriteReport report;
    patch.writeToDisk("first"_ba, report.completion());
    patch.writeToDisk(std::nullopt, report.completion());
    patchNamed(u"../nowhere"_s).writeToDisk(std::nullopt, report.completion());
    QFile kept(patch.filePath());
    QVERIFY(kept.open(QIODevice::ReadOnly));
    const auto line = u"old_1_2.patch, no error, \"\""_s;
    QCOMPARE(std::pair(kept.readAll(), report.calls()),
             std::pair("first"_ba, QStringList({line, line, u"../nowhere, no error, \"\""_s})));
}

void TestVARNOPatchFile::refusesANameThatIsNoFileName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString();
    QTest::newRow("NUL") << QString(u"a\0b_1_2"_s);
    QTest::newRow("too long") << QString(256, u'x');
    const QString outside = outsideName();
    for (const QString &name :
         {u"."_s, u".."_s, u"../"_s + outside, u"/tmp/"_s + outside, u"a/b_1_2.patch"_s, u"a/"_s})
        QTest::newRow(qPrintable(name)) << name;
}

void TestVARNOPatchFile::refusesANameThatIsNoFileName()
{
    QFETCH(QString, name);
    const QString above = QFileInfo(temporaryDirectory()).path();
    const auto before = filesIn(temporaryDirectory());
    WriteReport report;
    patchNamed(name).writeToDisk("evil"_ba, report.completion());
    QCOMPARE(std::tuple(filesIn(temporaryDirectory()), QFile::exists(above + u'/' + outsideName()),
                        report.calls()),
             std::tuple(before, false, QStringList{name + u", error, \"\""_s}));
}

void TestVARNOPatchFile::reportsAnErrorWhenAFolderIsInItsPlace()
{
    auto patch = patchNamed(u"folder_1_2.patch"_s);
    QVERIFY(QDir().mkpath(patch.filePath()));
    WriteReport report;
    patch.writeToDisk("data"_ba, report.completion());
    QCOMPARE(std::pair(QFileInfo(patch.filePath()).isDir(), report.calls()),
             std::pair(true, QStringList{u"folder_1_2.patch, error, \"\""_s}));
}

void TestVARNOPatchFile::preparesACommandWithBlanksEscaped()
{
    const auto patch = patchNamed(u"a b %1_1_2.patch"_s, u"/the game/a  b %2"_s);
    QString tool = QCoreApplication::applicationDirPath() + u"/Frameworks/apply_patch"_s;
    tool.replace(u" "_s, u"\\ "_s);
    QCOMPARE(patch.applyPatchCommand(), tool + u" "_s + temporaryDirectory() +
                                            u"/a b %1_1_2.patch /the\\ game/a\\ \\ b\\ %2"_s);
}

void TestVARNOPatchFile::neverChangesTheGameFile()
{
    // The tool is there and would do its work.
    const QString folder = QCoreApplication::applicationDirPath() + u"/Frameworks"_s;
    QVERIFY(QDir().mkpath(folder));
    QFile tool(folder + u"/apply_patch"_s);
    QVERIFY(tool.open(QIODevice::WriteOnly | QIODevice::Truncate));
    tool.write("#!/bin/sh\ncp \"$1\" \"$2\"\n");
    tool.close();
    QVERIFY(tool.setPermissions(QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner));

    const TestFolder game;
    game.write(u"file"_s, "before");
    WriteReport report;
    patchNamed(u"file_1_2.patch"_s, game.path(u"file"_s))
        .writeToDisk("after"_ba, report.completion());
    QVERIFY(QDir(folder).removeRecursively());
    QCOMPARE(
        std::pair(game.tree(), report.calls()),
        std::pair(QStringList{u"file=before"_s}, QStringList{u"file_1_2.patch, no error, \"\""_s}));
}

void TestVARNOPatchFile::returnsAnEmptyTextForTheLog()
{
    const QString text = patchNamed(u"a_1_2.patch"_s).applyPatch();
    QCOMPARE(std::pair(text.isNull(), text.isEmpty()), std::pair(false, true));
}

QUELLMOOR_TEST(TestVARNOPatchFile, "VARNOPatchFile")
#include "tst_VARNOPatchFile.moc"
