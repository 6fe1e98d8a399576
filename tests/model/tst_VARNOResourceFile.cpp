#include "LogCapture.h"
#include "Restrictions.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "WriteReport.h"
#include "model/SHA256.h"
#include "model/VARNOPatchFile.h"
#include "model/VARNOResourceFile.h"
#include "model/ValidationCache.h"
#include "platform/UserDefaults.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;
using Text = std::optional<QString>;
Q_DECLARE_METATYPE(Text)

namespace {

const auto PatchesUrl = u"https://h/mac/patches/"_s;

QString shortHash(const QByteArray &bytes) { return SHA256(bytes).left(7); }

QStringList describe(const VARNOResourceFile::PatchFiles &patches)
{
    QStringList texts;
    for (const auto &patch : patches)
        texts += u"%1 from %2 to %3"_s.arg(patch->name(), patch->fromHash(), patch->toHash());
    return texts;
}

} // namespace

class TestVARNOResourceFile : public QObject
{
    Q_OBJECT

private slots:
    void keepsWhatItIsMadeFrom();
    void treatsAMemberOfAnotherTypeAsAbsent_data();
    void treatsAMemberOfAnotherTypeAsAbsent();
    void isNamedAfterTheDecodedPathOfItsUrl_data();
    void isNamedAfterTheDecodedPathOfItsUrl();
    void takesTheHashesFromTheEndOfAPatchName_data();
    void takesTheHashesFromTheEndOfAPatchName();
    void takesPatchNamesInTheirOrder_data();
    void takesPatchNamesInTheirOrder();
    void makesPatchesForItsOwnFile();
    void equalsAFileWithTheSameUrlPathAndHash_data();
    void equalsAFileWithTheSameUrlPathAndHash();
    void keepsTheChainThatLeadsFromTheFileOnDisk_data();
    void keepsTheChainThatLeadsFromTheFileOnDisk();
    void existsWhateverHasItsPath_data();
    void existsWhateverHasItsPath();
    void hashesTheFirstSevenDigits();
    void putsTheDataInPlace_data();
    void putsTheDataInPlace();
    void reportsAnErrorAndChangesNothing_data();
    void reportsAnErrorAndChangesNothing();
    void keepsTheOldFileWhenTheDiskIsFull();

private:
    [[nodiscard]] VARNOResourceFile fileWith(const QJsonValue &entry, const QString &localPath,
                                             const QUrl &url = QUrl(u"https://h/mac/a.bz2"_s))
    {
        return {url, localPath, entry, m_cache, PatchesUrl};
    }

    TestFolder m_settings;
    UserDefaults m_userDefaults{m_settings.path(u"settings"_s)};
    const std::shared_ptr<ValidationCache> m_cache =
        std::make_shared<ValidationCache>(m_userDefaults, m_settings.path());
};

void TestVARNOResourceFile::keepsWhatItIsMadeFrom()
{
    const QUrl url(u"https://h/mac/data/archive_a.bin.bz2"_s);
    const auto file = fileWith(QJsonObject{{u"path"_s, u"data"_s},
                                           {u"hash"_s, u"3fa9c01"_s},
                                           {u"patches"_s, QJsonArray{u"x_1_2.patch"_s}},
                                           {u"other"_s, 1}},
                               u"/game/data/archive_a.bin"_s, url);
    QCOMPARE(QStringList({file.downloadURL().toString(), file.localPath(),
                          file.directoryPath().value_or(QString()),
                          file.hashValue().value_or(QString())}) +
                 describe(file.patchFiles()),
             QStringList({url.toString(), u"/game/data/archive_a.bin"_s, u"data"_s, u"3fa9c01"_s,
                          u"x_1_2.patch from 1 to 2"_s}));
}

void TestVARNOResourceFile::treatsAMemberOfAnotherTypeAsAbsent_data()
{
    QTest::addColumn<QJsonValue>("entry");
    QTest::addColumn<Text>("path");
    QTest::addColumn<Text>("hash");
    QTest::addColumn<int>("patchCount");
    const auto entry = [](const QJsonValue &path, const QJsonValue &hash,
                          const QJsonValue &patches) {
        return QJsonValue(
            QJsonObject{{u"path"_s, path}, {u"hash"_s, hash}, {u"patches"_s, patches}});
    };
    const QJsonArray one{u"_"_s};
    const QJsonObject object{{u"a_b"_s, 1}};
    QTest::newRow("all there") << entry(u"p"_s, u"h"_s, one) << Text(u"p"_s) << Text(u"h"_s) << 1;
    QTest::newRow("empty texts") << entry(QString(), QString(), one) << Text(QString())
                                 << Text(QString()) << 1;
    QTest::newRow("an empty entry") << QJsonValue(QJsonObject()) << Text() << Text() << 0;
    QTest::newRow("nulls") << entry({}, {}, {}) << Text() << Text() << 0;
    QTest::newRow("numbers") << entry(1, 2, 3) << Text() << Text() << 0;
    QTest::newRow("booleans") << entry(true, true, true) << Text() << Text() << 0;
    QTest::newRow("arrays") << entry(one, one, QJsonArray()) << Text() << Text() << 0;
    QTest::newRow("objects") << entry(object, object, object) << Text() << Text() << 1;
    QTest::newRow("patches as text")
        << entry(u"p"_s, u"h"_s, u"a_b"_s) << Text(u"p"_s) << Text(u"h"_s) << 0;
    QTest::newRow("patches of all types")
        << entry(u"p"_s, u"h"_s, QJsonArray{1, one, object, QJsonValue(), true, u"_"_s})
        << Text(u"p"_s) << Text(u"h"_s) << 1;
    QTest::newRow("an array as the entry") << QJsonValue(one) << Text() << Text() << 0;
    QTest::newRow("a text as the entry") << QJsonValue(u"hash"_s) << Text() << Text() << 0;
    QTest::newRow("a number as the entry") << QJsonValue(1) << Text() << Text() << 0;
    QTest::newRow("null as the entry") << QJsonValue() << Text() << Text() << 0;
    QTest::newRow("no entry") << QJsonValue(QJsonValue::Undefined) << Text() << Text() << 0;
}

void TestVARNOResourceFile::treatsAMemberOfAnotherTypeAsAbsent()
{
    QFETCH(QJsonValue, entry);
    QFETCH(Text, path);
    QFETCH(Text, hash);
    QFETCH(int, patchCount);
    const auto file = fileWith(entry, u"/game/a"_s);
    QCOMPARE(std::tuple(file.directoryPath(), file.hashValue(), int(file.patchFiles().size())),
             std::tuple(path, hash, patchCount));
}

void TestVARNOResourceFile::isNamedAfterTheDecodedPathOfItsUrl_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *title, const char16_t *url, const char16_t *name) {
        QTest::newRow(title) << QString::fromUtf16(url) << QString::fromUtf16(name);
    };
    row("plain", u"https://h/mac/data/archive_a.bin.bz2", u"/mac/data/archive_a.bin.bz2");
    row("a blank", u"https://h/mac/a%20b.bz2", u"/mac/a b.bz2");
    row("an umlaut", u"https://h/mac/%C3%84.bz2", u"/mac/\u00c4.bz2");
    row("decoded once", u"https://h/mac/a%2520b.bz2", u"/mac/a%20b.bz2");
    row("another host and port", u"https://h-qa:8443/mac/a.bz2", u"/mac/a.bz2");
    row("a number sign", u"https://h/mac/a%23b.bz2", u"/mac/a#b.bz2");
    row("beyond the first plane", u"https://h/mac/%F0%9F%90%89.bz2", u"/mac/\U0001f409.bz2");
}

void TestVARNOResourceFile::isNamedAfterTheDecodedPathOfItsUrl()
{
    QFETCH(QString, url);
    QFETCH(QString, name);
    const auto file = fileWith(QJsonObject(), u"/game/a b"_s, QUrl(url));
    QCOMPARE(
        QStringList({file.name(), file.downloadURL().toString(QUrl::FullyEncoded), file.localPath(),
                     file.lastValidDateKey(), file.lastValidHashKey()}),
        QStringList({name, url, u"/game/a b"_s, u"lastValid"_s + name, u"lastValidHash"_s + name}));
}

void TestVARNOResourceFile::takesTheHashesFromTheEndOfAPatchName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("patches");
    const auto row = [](const char *name, const char *from, const char *to) {
        const auto text = QString::fromLatin1(name);
        QTest::newRow(name) << text
                            << QStringList{u"%1 from %2 to %3"_s.arg(text, QLatin1String(from),
                                                                     QLatin1String(to))};
    };
    row("a_b_c.patch", "b", "c");
    row("archive_a.bin_77be012_3fa9c01.patch", "77be012", "3fa9c01");
    row("x.patch.patch_1_2.patch", "1", "2");
    row("1_2", "1", "2");
    row("a_1.patch2_3.patch", "12", "3");
    row("_", "", "");
    row("a__c.patch", "", "c");
    row("a_b_.patch", "b", "");
    row("a_b_c.PATCH", "b", "c.PATCH");
    row("data/a_b_c.patch", "b", "c");
    row("a b_c d_e f.patch", "c d", "e f");
    for (const auto *invalid : {"nohash.patch", "", ".patch", "a-b-c.patch"})
        QTest::newRow(qPrintable(u"invalid: "_s + QLatin1String(invalid)))
            << QString::fromLatin1(invalid) << QStringList();
}

void TestVARNOResourceFile::takesTheHashesFromTheEndOfAPatchName()
{
    QFETCH(QString, name);
    QFETCH(QStringList, patches);
    const LogCapture log;
    const auto found = fileWith({}, u"/game/a"_s).parsePatchFiles(QJsonArray{name});
    const QStringList lines =
        patches.isEmpty() ? QStringList(u"Invalid patch file"_s) : QStringList();
    QCOMPARE(std::pair(describe(found), log.lines()), std::pair(patches, lines));
}

void TestVARNOResourceFile::takesPatchNamesInTheirOrder_data()
{
    QTest::addColumn<QJsonValue>("names");
    QTest::addColumn<QStringList>("patches");
    QTest::addColumn<int>("lineCount");
    const QStringList both{u"z_1_2.patch from 1 to 2"_s, u"a_3_4.patch from 3 to 4"_s};
    QTest::newRow("a list") << QJsonValue(QJsonArray{u"z_1_2.patch"_s, u"a_3_4.patch"_s}) << both
                            << 0;
    QTest::newRow("bad names between good ones")
        << QJsonValue(QJsonArray{u"bad"_s, u"z_1_2.patch"_s, u"worse"_s, u"a_3_4.patch"_s}) << both
        << 2;
    QTest::newRow("the same name twice")
        << QJsonValue(QJsonArray{u"z_1_2.patch"_s, u"z_1_2.patch"_s})
        << QStringList{both[0], both[0]} << 0;
    QTest::newRow("an object's member names")
        << QJsonValue(QJsonObject{{u"a_3_4.patch"_s, 1}, {u"bad"_s, QJsonArray()}})
        << QStringList{both[1]} << 1;
    QTest::newRow("an empty list") << QJsonValue(QJsonArray()) << QStringList() << 0;
    QTest::newRow("nothing") << QJsonValue(QJsonValue::Undefined) << QStringList() << 0;
}

void TestVARNOResourceFile::takesPatchNamesInTheirOrder()
{
    QFETCH(QJsonValue, names);
    QFETCH(QStringList, patches);
    QFETCH(int, lineCount);
    const LogCapture log;
    const auto found = fileWith({}, u"/game/a"_s).parsePatchFiles(names);
    QCOMPARE(std::pair(describe(found), int(log.lines().size())), std::pair(patches, lineCount));
}

void TestVARNOResourceFile::makesPatchesForItsOwnFile()
{
    const auto patches = fileWith({}, u"/game/a b"_s).parsePatchFiles(QJsonArray{u"a_1_2.patch"_s});
    QCOMPARE(QStringList({patches.first()->localPath(), patches.first()->downloadURL().toString()}),
             QStringList({u"/game/a b"_s, u"https://h/mac/patches/a_1_2.patch.bz2"_s}));
}

void TestVARNOResourceFile::equalsAFileWithTheSameUrlPathAndHash_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QJsonObject>("entry");
    QTest::addColumn<QString>("localPath");
    QTest::addColumn<bool>("isEqual");
    const auto url = u"https://h/mac/a.bz2"_s;
    const auto local = u"/game/a"_s;
    const auto entry = [](const char *path, const char *hash) {
        QJsonObject object;
        if (path)
            object.insert(u"path"_s, QLatin1String(path));
        if (hash)
            object.insert(u"hash"_s, QLatin1String(hash));
        return object;
    };
    QTest::newRow("all the same") << url << entry("p", "h") << local << true;
    QTest::newRow("another local path") << url << entry("p", "h") << u"/other"_s << true;
    QTest::newRow("another URL") << u"https://h-qa/mac/a.bz2"_s << entry("p", "h") << local
                                 << false;
    QTest::newRow("another path") << url << entry("q", "h") << local << false;
    QTest::newRow("another hash") << url << entry("p", "H") << local << false;
    QTest::newRow("no path") << url << entry(nullptr, "h") << local << false;
    QTest::newRow("no hash") << url << entry("p", nullptr) << local << false;
    QJsonObject patched = entry("p", "h");
    patched.insert(u"patches"_s, QJsonArray{u"a_1_2.patch"_s});
    QTest::newRow("other patches") << url << patched << local << true;
}

void TestVARNOResourceFile::equalsAFileWithTheSameUrlPathAndHash()
{
    QFETCH(QString, url);
    QFETCH(QJsonObject, entry);
    QFETCH(QString, localPath);
    QFETCH(bool, isEqual);
    const auto file = fileWith(QJsonObject{{u"path"_s, u"p"_s}, {u"hash"_s, u"h"_s}}, u"/game/a"_s);
    const auto other = fileWith(entry, localPath, QUrl(url));
    const VARNOPatchFile patch(u"a"_s, u"/game/a"_s, u"1"_s, u"2"_s, u"https://h/mac/"_s);
    QCOMPARE(QList<bool>({file.isEqual(&other), other.isEqual(&file), file.isEqual(&file),
                          file.isEqual(nullptr), file.isEqual(&patch)}),
             QList<bool>({isEqual, isEqual, true, false, false}));
}

void TestVARNOResourceFile::keepsTheChainThatLeadsFromTheFileOnDisk_data()
{
    QTest::addColumn<QByteArray>("onDisk");
    QTest::addColumn<QStringList>("chain");
    const auto step = [](const char *from, const char *to) {
        return u"f_%1_%2.patch"_s.arg(shortHash(from), shortHash(to));
    };
    QTest::newRow("two versions back")
        << "one"_ba << QStringList{step("one", "two"), step("two", "three")};
    QTest::newRow("one version back") << "two"_ba << QStringList{step("two", "three")};
    QTest::newRow("another version") << "zero"_ba << QStringList();
    QTest::newRow("no file") << QByteArray() << QStringList();
}

void TestVARNOResourceFile::keepsTheChainThatLeadsFromTheFileOnDisk()
{
    QFETCH(QByteArray, onDisk);
    QFETCH(QStringList, chain);
    const TestFolder folder;
    if (!onDisk.isEmpty())
        folder.write(u"file"_s, onDisk);
    const auto patch = [](const char *from, const char *to) {
        return u"f_%1_%2.patch"_s.arg(shortHash(from), shortHash(to));
    };
    auto file = fileWith(
        QJsonObject{{u"hash"_s, shortHash("three")},
                    {u"patches"_s, QJsonArray{patch("x", "two"), patch("two", "three"),
                                              patch("one", "two"), patch("three", "one")}}},
        folder.path(u"file"_s));
    file.determinePatchFiles();
    QStringList names;
    for (const auto &found : file.patchFiles())
        names += found->name();
    QCOMPARE(names, chain);
}

void TestVARNOResourceFile::existsWhateverHasItsPath_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("hasDate");
    QTest::newRow("a file") << u"file"_s << true << true;
    QTest::newRow("a folder") << u"folder"_s << true << false;
    QTest::newRow("a link") << u"link"_s << true << false;
    QTest::newRow("a link that leads nowhere") << u"dangling"_s << true << false;
    QTest::newRow("nothing") << u"missing"_s << false << false;
    QTest::newRow("below a file") << u"file/below"_s << false << false;
}

void TestVARNOResourceFile::existsWhateverHasItsPath()
{
    QFETCH(QString, name);
    QFETCH(bool, exists);
    QFETCH(bool, hasDate);
    const TestFolder folder;
    folder.write(u"file"_s, "x");
    folder.makeFolder(u"folder"_s);
    folder.link(u"file"_s, u"link"_s);
    folder.link(u"nothing"_s, u"dangling"_s);
    const Date date{std::chrono::nanoseconds(1234567890123456789)};
    folder.setModified(u"file"_s, date);
    const auto file = fileWith({}, folder.path(name));
    QCOMPARE(std::pair(file.localFileExists(), file.lastModified()),
             std::pair(exists, hasDate ? std::optional(date) : std::nullopt));
}

void TestVARNOResourceFile::hashesTheFirstSevenDigits()
{
    const TestFolder folder;
    folder.write(u"file"_s, "abc");
    folder.write(u"empty"_s, "");
    QCOMPARE(QList<Text>({VARNOResourceFile::hashFileAtPath(folder.path(u"file"_s)),
                          VARNOResourceFile::hashFileAtPath(folder.path(u"empty"_s)),
                          VARNOResourceFile::hashFileAtPath(folder.path(u"missing"_s)),
                          VARNOResourceFile::hashFileAtPath(folder.path())}),
             QList<Text>({u"ba7816b"_s, u"e3b0c44"_s, std::nullopt, std::nullopt}));
}

void TestVARNOResourceFile::putsTheDataInPlace_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("hasData");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QStringList>("tree");
    // Before: the file "old" and the links "link" to it and "dangling" to nothing.
    const QStringList before{u"dangling -> %/gone"_s, u"link -> %/old"_s, u"old=before"_s};
    QTest::newRow("a new file") << u"new"_s << true << "after"_ba
                                << QStringList{before[0], before[1], u"new=after"_s, before[2]};
    QTest::newRow("in new folders")
        << u"new/deep/file.bin"_s << true << "after"_ba
        << QStringList{
               before[0], before[1], u"new/"_s, u"new/deep/"_s, u"new/deep/file.bin=after"_s,
               before[2]};
    QTest::newRow("over an old file")
        << u"old"_s << true << "after"_ba << QStringList{before[0], before[1], u"old=after"_s};
    QTest::newRow("empty over an old file")
        << u"old"_s << true << ""_ba << QStringList{before[0], before[1], u"old="_s};
    QTest::newRow("instead of a link")
        << u"link"_s << true << "after"_ba << QStringList{before[0], u"link=after"_s, before[2]};
    QTest::newRow("instead of a link that leads nowhere")
        << u"dangling"_s << true << "after"_ba
        << QStringList{u"dangling=after"_s, before[1], before[2]};
    QTest::newRow("nothing over an old file") << u"old"_s << false << QByteArray() << before;
    QTest::newRow("nothing in new folders") << u"new/file"_s << false << QByteArray() << before;
}

void TestVARNOResourceFile::putsTheDataInPlace()
{
    QFETCH(QString, name);
    QFETCH(bool, hasData);
    QFETCH(QByteArray, data);
    QFETCH(QStringList, tree);
    const TestFolder folder;
    folder.write(u"old"_s, "before");
    folder.link(folder.path(u"old"_s), u"link"_s);
    folder.link(folder.path(u"gone"_s), u"dangling"_s);
    WriteReport report;
    fileWith({}, folder.path(name))
        .writeToDisk(hasData ? std::optional(data) : std::nullopt, report.completion());
    tree.replaceInStrings(u"%"_s, folder.path());
    QCOMPARE(std::pair(folder.tree(), report.calls()),
             std::pair(tree, QStringList{name.section(u'/', -1) + u", no error, \"\""_s}));
}

void TestVARNOResourceFile::reportsAnErrorAndChangesNothing_data()
{
    QTest::addColumn<QString>("name");
    for (const auto *name :
         {"folder", "full", "file/below", "closed/new", "closed/old", "closed/a/b"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestVARNOResourceFile::reportsAnErrorAndChangesNothing()
{
    QFETCH(QString, name);
    const TestFolder folder;
    folder.setMode(QString(), 0777);
    folder.makeFolder(u"folder"_s);
    folder.write(u"full/inner"_s, "x");
    folder.write(u"file"_s, "before");
    folder.write(u"closed/old"_s, "before");
    folder.setMode(u"closed"_s, 0555);
    const QStringList before = folder.tree();
    WriteReport report;
    {
        const WithoutPrivileges asAnybody;
        fileWith({}, folder.path(name)).writeToDisk("after"_ba, report.completion());
    }
    QCOMPARE(std::pair(folder.tree(), report.calls()),
             std::pair(before, QStringList{name.section(u'/', -1) + u", error, \"\""_s}));
}

void TestVARNOResourceFile::keepsTheOldFileWhenTheDiskIsFull()
{
    const TestFolder folder;
    folder.write(u"old"_s, "before");
    WriteReport report;
    {
        const FileSizeLimit fullDisk(1000);
        fileWith({}, folder.path(u"old"_s)).writeToDisk(QByteArray(5000, 'x'), report.completion());
    }
    QCOMPARE(std::pair(folder.tree(), report.calls()),
             std::pair(QStringList{u"old=before"_s}, QStringList{u"old, error, \"\""_s}));
}

QUELLMOOR_TEST(TestVARNOResourceFile, "VARNOResourceFile")
#include "tst_VARNOResourceFile.moc"
