#include "TestFolder.h"
#include "TestMain.h"
#include "model/GameFolder.h"

#include <QTest>

#include <climits>

using namespace Qt::StringLiterals;

namespace {

const auto Root = u"/nowhere/game"_s;
const auto NoFile = u"it does not name a file in the game folder"_s;
const auto LongName = u"a name in it is too long"_s;
const auto LongPath = u"it is too long"_s;
const auto NulCharacter = u"it holds a NUL character"_s;
const auto LeadsOut = u"a link leads out of the game folder"_s;

// The path, or the reason against it in brackets.
QString answer(GameFolder &folder, const QString &key)
{
    const auto result = folder.pathFor(key);
    if (const auto *refusal = std::get_if<GameFolder::Refusal>(&result))
        return u'[' + refusal->reason + u']';
    return std::get<QString>(result);
}

// Each line makes one thing: "name/" a folder, "name" a file, "name -> target" a link. In targets
// %g is the game folder's path, %o that of the folder outside it.
void build(const TestFolder &folder, const QStringList &lines)
{
    folder.makeFolder(u"outside/secret"_s);
    for (QString line : lines) {
        line.replace(u"%g"_s, folder.path(u"game"_s)).replace(u"%o"_s, folder.path(u"outside"_s));
        const QStringList parts = line.split(u" -> "_s);
        if (parts.size() == 2)
            folder.link(parts[1], u"game/"_s + parts[0]);
        else if (line.endsWith(u'/'))
            folder.makeFolder(u"game/"_s + line);
        else
            folder.write(u"game/"_s + line, "x");
    }
}

void addLayout(const char *name, const QStringList &lines, const QString &key, bool isInside)
{
    QTest::newRow(name) << lines << key << isInside;
}

} // namespace

class TestGameFolder : public QObject
{
    Q_OBJECT

private slots:
    void refusesKeysThatNameNoFileInIt_data();
    void refusesKeysThatNameNoFileInIt();
    void keepsEveryOtherKeyAsItIs_data();
    void keepsEveryOtherKeyAsItIs();
    void limitsThePathAsTheSystemDoes();
    void followsOnlyLinksThatStayInside_data();
    void followsOnlyLinksThatStayInside();
    void mayBeALinkItself_data();
    void mayBeALinkItself();
    void refusesEveryLinkWhenTheFolderAppearsLater_data();
    void refusesEveryLinkWhenTheFolderAppearsLater();
    void remembersWhatItFoundOutAboutAFolder();
};

void TestGameFolder::refusesKeysThatNameNoFileInIt_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("reason");
    for (const auto *key : {"",
                            ".",
                            "..",
                            "/",
                            "//",
                            "///",
                            "./",
                            "../",
                            "/.",
                            "/..",
                            "./.",
                            "../..",
                            "./a",
                            "../a",
                            "a/.",
                            "a/..",
                            "a/./b",
                            "a/../b",
                            "a/b/..",
                            "a/b/../../..",
                            "a/../../b",
                            "/abs",
                            "/etc/passwd",
                            "//a",
                            "a//b",
                            "a/",
                            "a/b/",
                            "a//",
                            "../../../../etc/passwd",
                            "a/b/./c"})
        QTest::newRow(qPrintable(u"\"%1\""_s.arg(QLatin1String(key))))
            << QString::fromLatin1(key) << NoFile;
    const QString nul(1, QChar(u'\0'));
    QTest::newRow("only NUL") << nul << NulCharacter;
    QTest::newRow("NUL at the end") << u"a"_s + nul << NulCharacter;
    QTest::newRow("NUL inside") << u"a"_s + nul + u"b"_s << NulCharacter;
    QTest::newRow("NUL in a folder") << u"a"_s + nul + u"/b"_s << NulCharacter;
    QTest::newRow("NUL and a step up") << u"../"_s + nul << NulCharacter;
    QTest::newRow("a name of 256 bytes") << QString(256, u'x') << LongName;
    QTest::newRow("a folder of 256 bytes") << QString(256, u'x') + u"/a"_s << LongName;
    QTest::newRow("a name of 128 letters in 256 bytes") << QString(128, u'\u00e4') << LongName;
    QTest::newRow("a path beyond all limits") << u"a/"_s.repeated(2100) + u"a"_s << LongPath;
    QTest::newRow("a short path in many bytes")
        << (QString(80, u'\u20ac') + u'/').repeated(20) + u"a"_s << LongPath;
    QTest::newRow("a million letters") << QString(1000000, u'x') << LongPath;
}

void TestGameFolder::refusesKeysThatNameNoFileInIt()
{
    QFETCH(QString, key);
    QFETCH(QString, reason);
    GameFolder folder(Root);
    QCOMPARE(answer(folder, key), u'[' + reason + u']');
}

void TestGameFolder::keepsEveryOtherKeyAsItIs_data()
{
    QTest::addColumn<QString>("key");
    for (const char16_t *key : {u"a",
                                u"ExampleGame",
                                u"data/archive_a.bin",
                                u"a/b/c/d/e/f",
                                u"...",
                                u".hidden",
                                u"..a",
                                u"a..",
                                u".../a",
                                u"a/..b/c",
                                u" ",
                                u" a ",
                                u"a b",
                                u"\\",
                                u"a\\b",
                                u"..\\..\\a",
                                u"\\\\host\\share",
                                u"C:",
                                u"C:\\a",
                                u"c:/a",
                                u"~",
                                u"~root/a",
                                u"%2e%2e",
                                u"%2e%2e/a",
                                u"%00",
                                u"a%2fb",
                                u"$HOME/a",
                                u"-rf",
                                u"--",
                                u"*",
                                u"a?b",
                                u"a#b",
                                u"a;b",
                                u"`a`",
                                u"CON",
                                u"nul.txt",
                                u"a:b",
                                u":/resource",
                                u"qrc:/a",
                                u"file:/a",
                                u"\u00c4",
                                u"A\u0308",
                                u"\U0001f409",
                                u"\u202ea",
                                u"a\nb",
                                u"\u2215a",
                                u"\uff0e\uff0e/a"})
        QTest::newRow(qPrintable(u"\"%1\""_s.arg(QString::fromUtf16(key)).replace(u'\n', u"\\n"_s)))
            << QString::fromUtf16(key);
    QTest::newRow("a name of 255 bytes") << QString(255, u'x');
    QTest::newRow("folders of 255 bytes") << (QString(255, u'x') + u'/').repeated(10) + u"a"_s;
    QTest::newRow("a name of 127 letters in 254 bytes") << QString(127, u'\u00e4');
}

void TestGameFolder::keepsEveryOtherKeyAsItIs()
{
    QFETCH(QString, key);
    GameFolder folder(Root);
    QCOMPARE(answer(folder, key), Root + u'/' + key);
}

void TestGameFolder::limitsThePathAsTheSystemDoes()
{
    GameFolder folder(Root);
    const auto keyOfPathLength = [](qsizetype length) {
        QString key = u"a/"_s.repeated((length - Root.size() - 1) / 2);
        return key.size() < length - Root.size() - 1 ? key + u'b' : key.chopped(2) + u"bb"_s;
    };
    // The system counts the end of the text, too.
    const QString longest = keyOfPathLength(PATH_MAX - 1);
    QCOMPARE(QStringList({answer(folder, longest), answer(folder, keyOfPathLength(PATH_MAX))}),
             QStringList({Root + u'/' + longest, u'[' + LongPath + u']'}));
}

void TestGameFolder::followsOnlyLinksThatStayInside_data()
{
    QTest::addColumn<QStringList>("layout");
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isInside");

    addLayout("an empty folder", {}, u"a/b/c"_s, true);
    addLayout("plain folders", {u"a/b/"_s}, u"a/b/c"_s, true);
    addLayout("a file in place of a folder", {u"a"_s}, u"a/b"_s, true);
    addLayout("the file itself is a link out", {u"a -> %o/secret"_s}, u"a"_s, true);
    addLayout("the file itself is a dangling link", {u"a -> %o/gone"_s}, u"a"_s, true);
    addLayout("an absolute link out", {u"a -> %o"_s}, u"a/b"_s, false);
    addLayout("a relative link out", {u"a -> ../outside"_s}, u"a/b"_s, false);
    addLayout("a link to the root", {u"a -> /"_s}, u"a/etc/passwd"_s, false);
    addLayout("a link out further down", {u"a/"_s, u"a/b -> %o"_s}, u"a/b/c/d"_s, false);
    addLayout("below a link out", {u"a -> %o"_s}, u"a/secret/b"_s, false);
    addLayout("a link to the game folder's own folder", {u"a -> .."_s}, u"a/outside/b"_s, false);
    addLayout("out and in again", {u"a -> %o"_s, u"in/"_s, u"out -> %o/secret"_s}, u"out/b"_s,
              false);
    addLayout("a folder whose name begins alike", {u"a -> ../game2"_s}, u"a/b"_s, false);
    addLayout("a dangling link", {u"a -> nothing"_s}, u"a/b"_s, false);
    addLayout("a link to itself", {u"a -> a"_s}, u"a/b"_s, false);
    addLayout("two links in a ring", {u"a -> b"_s, u"b -> a"_s}, u"a/c"_s, false);
    addLayout("a chain that ends outside", {u"a -> b"_s, u"b -> c"_s, u"c -> %o"_s}, u"a/d"_s,
              false);
    addLayout("a chain that ends inside", {u"a -> b"_s, u"b -> c"_s, u"c/"_s}, u"a/d"_s, true);
    addLayout("a relative link inside", {u"real/"_s, u"a -> real"_s}, u"a/b"_s, true);
    addLayout("an absolute link inside", {u"real/deep/"_s, u"a -> %g/real/deep"_s}, u"a/b"_s, true);
    addLayout("a link back up inside", {u"a/b/"_s, u"a/b/c -> ../.."_s}, u"a/b/c/d"_s, true);
    addLayout("a link to the game folder", {u"a -> %g"_s}, u"a/b"_s, true);
    addLayout("round and round inside", {u"a -> ."_s}, u"a/a/a/b"_s, true);
    addLayout("inside, then out", {u"real/"_s, u"a -> real"_s, u"real/o -> %o"_s}, u"a/o/b"_s,
              false);
    addLayout("inside by way of outside", {u"real/"_s, u"a -> ../outside/back/real"_s}, u"a/b"_s,
              true);
    addLayout("out through a folder that a link inside leads to",
              {u"real/"_s, u"a -> real/x"_s, u"real/x -> %o/secret"_s}, u"a/b"_s, false);
    addLayout("a link to a file inside", {u"file"_s, u"a -> file"_s}, u"a/b"_s, true);
    addLayout("a link to a file outside", {u"a -> /etc/passwd"_s}, u"a/b"_s, false);
}

void TestGameFolder::followsOnlyLinksThatStayInside()
{
    QFETCH(QStringList, layout);
    QFETCH(QString, key);
    QFETCH(bool, isInside);
    const TestFolder folder;
    folder.makeFolder(u"game"_s);
    folder.makeFolder(u"game2"_s);
    build(folder, layout);
    folder.link(folder.path(u"game"_s), u"outside/back"_s);
    const QString root = folder.path(u"game"_s);
    GameFolder game(root);
    QCOMPARE(answer(game, key), isInside ? root + u'/' + key : u'[' + LeadsOut + u']');
}

void TestGameFolder::mayBeALinkItself_data()
{
    QTest::addColumn<QStringList>("layout");
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isInside");
    addLayout("plain folders", {u"a/b/"_s}, u"a/b/c"_s, true);
    addLayout("nothing there", {}, u"a/b/c"_s, true);
    addLayout("a file of its own", {}, u"a"_s, true);
    addLayout("a link inside by its real path", {u"real/"_s, u"a -> %g/real"_s}, u"a/b"_s, true);
    addLayout("a link inside by the link's path", {u"real/"_s, u"a -> %o/link/real"_s}, u"a/b"_s,
              true);
    addLayout("a link out", {u"a -> %o/secret"_s}, u"a/b"_s, false);
    addLayout("a link to where the game folder's link lies", {u"a -> %o"_s}, u"a/b"_s, false);
}

void TestGameFolder::mayBeALinkItself()
{
    QFETCH(QStringList, layout);
    QFETCH(QString, key);
    QFETCH(bool, isInside);
    const TestFolder folder;
    folder.makeFolder(u"game"_s);
    build(folder, layout);
    folder.link(folder.path(u"game"_s), u"outside/link"_s);
    const QString root = folder.path(u"outside/link"_s);
    GameFolder game(root);
    QCOMPARE(answer(game, key), isInside ? root + u'/' + key : u'[' + LeadsOut + u']');
}

void TestGameFolder::refusesEveryLinkWhenTheFolderAppearsLater_data()
{
    QTest::addColumn<QStringList>("layout");
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isInside");
    addLayout("a link out", {u"a -> %o"_s}, u"a/b"_s, false);
    addLayout("a dangling link", {u"a -> nothing"_s}, u"a/b"_s, false);
    addLayout("a link inside", {u"real/"_s, u"a -> real"_s}, u"a/b"_s, false);
    addLayout("plain folders", {u"a/"_s}, u"a/b"_s, true);
}

void TestGameFolder::refusesEveryLinkWhenTheFolderAppearsLater()
{
    QFETCH(QStringList, layout);
    QFETCH(QString, key);
    QFETCH(bool, isInside);
    const TestFolder folder;
    const QString root = folder.path(u"game"_s);
    GameFolder game(root);
    folder.makeFolder(u"game"_s);
    build(folder, layout);
    QCOMPARE(answer(game, key), isInside ? root + u'/' + key : u'[' + LeadsOut + u']');
}

void TestGameFolder::remembersWhatItFoundOutAboutAFolder()
{
    const TestFolder folder;
    folder.makeFolder(u"game/a"_s);
    const QString root = folder.path(u"game"_s);
    GameFolder first(root);
    QStringList answers{answer(first, u"a/b"_s)};
    QVERIFY(QDir().rmdir(root + u"/a"_s));
    folder.link(u"/etc"_s, u"game/a"_s);
    GameFolder second(root);
    answers += answer(first, u"a/c"_s);
    answers += answer(second, u"a/c"_s);
    QCOMPARE(answers, QStringList({root + u"/a/b"_s, root + u"/a/c"_s, u'[' + LeadsOut + u']'}));
}

QUELLMOOR_TEST(TestGameFolder, "GameFolder")
#include "tst_GameFolder.moc"
