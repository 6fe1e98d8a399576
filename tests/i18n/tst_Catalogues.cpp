#include "Catalogue.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "app/Translations.h"

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

namespace {

QStringList placeholdersIn(const QString &text)
{
    static const QRegularExpression placeholder(QStringLiteral("%[0-9n]"));
    QStringList found;
    for (auto all = placeholder.globalMatch(text); all.hasNext();)
        found += all.next().captured();
    found.sort();
    return found;
}

// The blanks at both ends and the mark that ends a sentence: others put texts before and after.
QString edgesOf(const QString &text)
{
    const QString trimmed = text.trimmed();
    const bool isSentence = trimmed.endsWith(QLatin1Char('.'));
    return QStringLiteral("%1|%2|%3")
        .arg(text.startsWith(QLatin1Char(' ')))
        .arg(text.endsWith(QLatin1Char(' ')))
        .arg(isSentence);
}

// The key that opens the entry of a menu; null without one.
QChar mnemonicOf(const QString &text)
{
    const qsizetype mark = text.indexOf(QLatin1Char('&'));
    return mark < 0 || mark + 1 == text.size() ? QChar() : text.at(mark + 1).toLower();
}

QStringList foldersRead()
{
    return QStringLiteral(QUELLMOOR_TRANSLATED_FOLDERS).split(QLatin1Char(','));
}

} // namespace

class TestCatalogues : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void readsEveryFolderOfTheProgram();
    void namesItsLanguage_data() { languages(); }
    void namesItsLanguage();
    void hasExactlyTheTextsOfTheProgram_data() { languages(); }
    void hasExactlyTheTextsOfTheProgram();
    void translatesEveryText_data() { languages(); }
    void translatesEveryText();
    void keepsPlaceholdersAndEdges_data() { languages(); }
    void keepsPlaceholdersAndEdges();
    void givesEachMenuEntryAKeyOfItsOwn_data() { languages(); }
    void givesEachMenuEntryAKeyOfItsOwn();

private:
    static void languages();

    TestFolder m_folder;
    QStringList m_keysOfTheProgram;
};

void TestCatalogues::languages()
{
    QTest::addColumn<QString>("language");
    for (const QString &language : Translations::languages())
        QTest::newRow(qPrintable(language)) << language;
}

void TestCatalogues::initTestCase()
{
    const QString path = m_folder.path(QStringLiteral("found.ts"));
    QProcess lupdate;
    lupdate.setWorkingDirectory(QStringLiteral(QUELLMOOR_SOURCE_FOLDER));
    lupdate.setProcessChannelMode(QProcess::MergedChannels);
    lupdate.start(
        QStringLiteral(QUELLMOOR_LUPDATE),
        QStringList{QStringLiteral("-silent"), QStringLiteral("-I"), QStringLiteral(".")} +
            foldersRead() + QStringList{QStringLiteral("-ts"), path});
    QVERIFY(lupdate.waitForFinished());
    // It says so when it cannot tell the context of a text.
    QCOMPARE(QString::fromLocal8Bit(lupdate.readAll()), QString());
    m_keysOfTheProgram = Catalogue::read(path).sortedKeys();
    QVERIFY(m_keysOfTheProgram.contains(QStringLiteral("Alerts|Launcher Update Required")));
    QVERIFY(m_keysOfTheProgram.contains(QStringLiteral("Launcher|Forgot password?")));
}

// A program has its sources in folders that the build goes into; others are tools and tests.
void TestCatalogues::readsEveryFolderOfTheProgram()
{
    QFile build(QStringLiteral(QUELLMOOR_SOURCE_FOLDER "/CMakeLists.txt"));
    QVERIFY(build.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(build.readAll());
    static const QRegularExpression folder(QStringLiteral("(?m)^add_subdirectory\\((\\w+)\\)$"));
    QStringList folders;
    for (auto all = folder.globalMatch(text); all.hasNext();)
        folders += all.next().captured(1);
    folders.sort();
    QCOMPARE(foldersRead(), folders);
}

void TestCatalogues::namesItsLanguage()
{
    QFETCH(QString, language);
    QCOMPARE(Catalogue::of(language).language, language);
}

void TestCatalogues::hasExactlyTheTextsOfTheProgram()
{
    QFETCH(QString, language);
    QCOMPARE(Catalogue::of(language).sortedKeys(), m_keysOfTheProgram);
}

void TestCatalogues::translatesEveryText()
{
    QFETCH(QString, language);
    QStringList missing;
    for (const Catalogue::Message &message : Catalogue::of(language).messages)
        if (!message.state.isEmpty() || message.translation.trimmed().isEmpty())
            missing += message.key();
    QCOMPARE(missing, QStringList());
}

void TestCatalogues::keepsPlaceholdersAndEdges()
{
    QFETCH(QString, language);
    for (const Catalogue::Message &message : Catalogue::of(language).messages) {
        QCOMPARE(placeholdersIn(message.translation), placeholdersIn(message.source));
        QVERIFY2(edgesOf(message.translation) == edgesOf(message.source),
                 qPrintable(message.key()));
    }
}

void TestCatalogues::givesEachMenuEntryAKeyOfItsOwn()
{
    QFETCH(QString, language);
    QSet<QString> taken;
    for (const Catalogue::Message &message : Catalogue::of(language).messages) {
        const QChar mnemonic = mnemonicOf(message.translation);
        QVERIFY2(mnemonic.isNull() == mnemonicOf(message.source).isNull(),
                 qPrintable(message.key()));
        if (mnemonic.isNull())
            continue;
        const QString place = message.context + mnemonic;
        QVERIFY2(!taken.contains(place), qPrintable(message.key()));
        taken.insert(place);
    }
}

QUELLMOOR_TEST(TestCatalogues, "Catalogues")
#include "tst_Catalogues.moc"
