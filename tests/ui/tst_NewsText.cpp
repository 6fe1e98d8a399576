#include "TestMain.h"
#include "ui/NewsText.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestNewsText : public QObject
{
    Q_OBJECT

private slots:
    void keepsWhatIsSaid_data();
    void keepsWhatIsSaid();
    void isShortWhateverCame_data();
    void isShortWhateverCame();
    void dropsALongLink();
    void saysThatThereIsMore();
    void letsLongWordsBreak();
};

void TestNewsText::keepsWhatIsSaid_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QString &page, const QString &text) {
        QTest::newRow(name) << page << text;
    };
    row("nothing", u""_s, u""_s);
    row("words alone", u"Fog at dawn"_s, u"<p>Fog at dawn</p>"_s);
    row("a heading and a paragraph", u"<h1>News</h1>\n<p>Fog</p>"_s, u"<h1>News</h1><p>Fog</p>"_s);
    row("a heading without an end", u"<h2>News<p>Fog"_s, u"<h2>News</h2><p>Fog</p>"_s);
    row("capitals", u"<H1>News</H1><P>Fog</P>"_s, u"<h1>News</h1><p>Fog</p>"_s);
    row("empty paragraphs", u"<p></p><div> </div><p>Fog</p><p>\n</p>"_s, u"<p>Fog</p>"_s);
    row("lines", u"<br>Fog<br>Rain<br/>"_s, u"<p>Fog<br>Rain<br></p>"_s);
    row("a rule", u"<p>Fog<hr>Rain"_s, u"<p>Fog</p><hr><p>Rain</p>"_s);
    row("a list", u"<ul> <li>Fog</li> <li>Rain</li> </ul>Sun"_s,
        u"<ul><li>Fog</li><li>Rain</li></ul><p>Sun</p>"_s);
    row("numbers", u"<ol><li>Fog<li>Rain</ol>"_s, u"<ol><li>Fog</li><li>Rain</li></ol>"_s);
    row("a list without ends", u"<ul><li>Fog<li>Rain</ul>Sun"_s,
        u"<ul><li>Fog</li><li>Rain</li></ul><p>Sun</p>"_s);
    row("a list in a list", u"<ul><li>Fog<ol><li>Rain</ol></ul>"_s,
        u"<ul><li>Fog</li></ul><ol><li>Rain</li></ol>"_s);
    row("items alone", u"<li>Fog<li>Rain"_s, u"<ul><li>Fog</li><li>Rain</li></ul>"_s);
    row("a table", u"<table border=9><tr><td>Fog</td><td>Rain</td></tr><tr><td>Sun"_s,
        u"<p>Fog Rain</p><p>Sun</p>"_s);
    row("bold and italic", u"<b>Fog <i>and</b> rain</i>"_s,
        u"<p><b>Fog </b><i><b>and</b></i><i> rain</i></p>"_s);
    row("ends without a begin", u"</b></i></p></ul></a>Fog"_s, u"<p>Fog</p>"_s);
    row("a link", u"<a class=x href=\"/a?b&amp;c\" id=y>Fog</a>"_s,
        u"<p><a href=\"/a?b&amp;c\">Fog</a></p>"_s);
    row("a link in single quotes", u"<a href='/\"x'>Fog</a>"_s,
        u"<p><a href=\"/&quot;x\">Fog</a></p>"_s);
    row("a link without quotes", u"<A HREF=/x>Fog</A>"_s, u"<p><a href=\"/x\">Fog</a></p>"_s);
    row("a link to nowhere", u"<a name=x>Fog</a><a>Rain</a>"_s, u"<p>FogRain</p>"_s);
    row("links side by side", u"<a href=/x>Fog</a><a href=/y>Rain</a>"_s,
        u"<p><a href=\"/x\">Fog</a> <a href=\"/y\">Rain</a></p>"_s);
    row("odd attributes", u"<a = 'b' c href = /x =>Fog</a>"_s, u"<p><a href=\"/x\">Fog</a></p>"_s);
    row("a bracket in an attribute", u"<p title='a > b'>Fog"_s, u"<p>Fog</p>"_s);
    row("brackets", u"1 < 2 <3 << <"_s, u"<p>1 &lt; 2 &lt;3 &lt;&lt; &lt;</p>"_s);
    row("references", u"Fog &amp; r&auml;in &lt;"_s, u"<p>Fog &amp; r&auml;in &lt;</p>"_s);
    row("unknown tags", u"<moor-x>Fog</moor-x><font size=9>!</font>"_s, u"<p>Fog!</p>"_s);
    row("what is never seen",
        u"<!DOCTYPE html><?xml?><title>t</title><style>p{}</style><!-- <p>c --><p>Fog"
        "<script>if (1 < 2) document.write('<p>x');</SCRIPT>"_s,
        u"<p>Fog</p>"_s);
    row("a comment without an end", u"Fog<!-- rain"_s, u"<p>Fog</p>"_s);
    row("a script without an end", u"Fog<script>rain"_s, u"<p>Fog</p>"_s);
    row("a tag without an end", u"Fog<p class=\"rain>"_s, u"<p>Fog</p>"_s);
    row("a picture", u"<img src=/x>Fog"_s, u"<p>Fog</p>"_s);
}

void TestNewsText::keepsWhatIsSaid()
{
    QFETCH(QString, page);
    QFETCH(QString, text);
    QCOMPARE(simpleNews(page), text);
}

void TestNewsText::isShortWhateverCame_data()
{
    QTest::addColumn<QString>("unit");
    for (const char *unit : {"word ",
                             "x",
                             "<",
                             "&",
                             "<p>",
                             "<p>x",
                             "<br>",
                             "x<br>",
                             "<hr>",
                             "<b>",
                             "<b>x",
                             "<ul><li>",
                             "<ul><li>x",
                             "<li>x",
                             "<a href=/x>",
                             "<a href=/xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx>x",
                             "<table><tr><td>",
                             "<table><tr><td>x",
                             "<td>x",
                             "<!--",
                             "<a \"",
                             "<a =",
                             "<script>"})
        QTest::newRow(unit) << QString::fromLatin1(unit);
}

void TestNewsText::isShortWhateverCame()
{
    constexpr qsizetype FourMegabytes = 4'000'000;
    constexpr qsizetype Most = 250'000;
    QFETCH(QString, unit);
    for (const QString &begin : {u""_s, u"<a href='"_s}) {
        const QString page = begin + unit.repeated(FourMegabytes / unit.size());
        const QString text = simpleNews(page + u"'>Fog"_s);
        QVERIFY2(text.size() < Most, qPrintable(QString::number(text.size())));
    }
}

void TestNewsText::dropsALongLink()
{
    const auto linkOf = [](qsizetype size) { return u"<a href='"_s + u"\""_s.repeated(size); };
    QCOMPARE(simpleNews(linkOf(2001) + u"'>Fog</a>"_s), u"<p>Fog</p>"_s);
    QCOMPARE(simpleNews(linkOf(2) + u"'>Fog</a>"_s), u"<p><a href=\"&quot;&quot;\">Fog</a></p>"_s);
}

void TestNewsText::saysThatThereIsMore()
{
    QVERIFY(!simpleNews(u"moor "_s.repeated(3900)).endsWith(u"...</p>"));
    QVERIFY(simpleNews(u"moor "_s.repeated(4100)).endsWith(u"</p><p>...</p>"));
    QVERIFY(simpleNews(u"<p>moor</p>"_s.repeated(4000)).endsWith(u"</p><p>...</p>"));
}

void TestNewsText::letsLongWordsBreak()
{
    const QChar mayBreakHere(0x200b);
    QCOMPARE(simpleNews(u"x"_s.repeated(100)).count(mayBreakHere), 0);
    QCOMPARE(simpleNews(u"x"_s.repeated(99) + u" "_s + u"x"_s.repeated(99)).count(mayBreakHere), 0);
    QCOMPARE(simpleNews(u"x"_s.repeated(250)), u"<p>"_s + u"x"_s.repeated(100) + mayBreakHere +
                                                   u"x"_s.repeated(100) + mayBreakHere +
                                                   u"x"_s.repeated(50) + u"</p>"_s);
    const QString spaces = simpleNews(u"&nbsp;"_s.repeated(100));
    QVERIFY(spaces.contains(mayBreakHere));
    QCOMPARE(QString(spaces).remove(mayBreakHere).count(u"&nbsp;"_s), 100);
    QCOMPARE(spaces.count(u"&nbsp;"_s), 100);
}

QUELLMOOR_TEST(TestNewsText, "NewsText")
#include "tst_NewsText.moc"
