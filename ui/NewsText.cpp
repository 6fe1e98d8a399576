#include "ui/NewsText.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestPage = 500'000; // of what is read at all
constexpr qsizetype LongestLink = 2'000;
constexpr qsizetype Budget = 20'000;
// What a paragraph, a line end and a rule cost beside their letters, and what words between two
// tags do.
constexpr qsizetype CostOfALine = 20;
constexpr qsizetype CostOfARun = 5;
// Laying out a word takes a time that grows with the square of its length.
constexpr qsizetype LongestWord = 100;
constexpr qsizetype LongestReference = 10;
constexpr QChar MayBreakHere(0x200b);

// Tags as far as they matter; what is not known here has no meaning of its own.
enum class Meaning { Line, Heading, Item, List, Cell, LineEnd, Rule, Bold, Italic, Link, Unseen };

const QHash<QString, Meaning> &meanings()
{
    static const QHash<QString, Meaning> all = [] {
        QHash<QString, Meaning> result;
        const auto add = [&result](Meaning meaning, const char *names) {
            for (const QString &name : QString::fromLatin1(names).split(u' '))
                result.insert(name, meaning);
        };
        add(Meaning::Line, "p div section article header footer main nav aside address blockquote "
                           "center pre form fieldset dl dt dd table caption tr body figure");
        add(Meaning::Heading, "h1 h2 h3 h4 h5 h6");
        add(Meaning::Item, "li");
        add(Meaning::List, "ul ol");
        add(Meaning::Cell, "td th");
        add(Meaning::LineEnd, "br");
        add(Meaning::Rule, "hr");
        add(Meaning::Bold, "b strong");
        add(Meaning::Italic, "i em cite");
        add(Meaning::Link, "a");
        add(Meaning::Unseen, "script style title noscript template textarea select svg iframe");
        return result;
    }();
    return all;
}

// A tag without its brackets: "a href=x", "/p".
class Tag
{
public:
    explicit Tag(QStringView inner) : isEnd(inner.startsWith(u'/'))
    {
        inner = inner.mid(isEnd ? 1 : 0);
        const auto *end =
            std::find_if(inner.begin(), inner.end(), [](QChar c) { return !c.isLetterOrNumber(); });
        name = inner.first(end - inner.begin()).toString().toLower();
        m_attributes = inner.mid(name.size());
    }

    [[nodiscard]] QString attribute(QStringView wanted) const
    {
        QStringView left = m_attributes;
        while (!left.isEmpty()) {
            const QString found = takeName(left).toString().toLower();
            const QStringView value = takeValue(left);
            if (found == wanted)
                return value.toString();
        }
        return {};
    }

    const bool isEnd;
    QString name;

private:
    static QStringView takeName(QStringView &left)
    {
        left = left.trimmed();
        qsizetype size = 0;
        while (size < left.size() && left[size] != u'=' && !left[size].isSpace())
            ++size;
        const QStringView name = left.first(size);
        left = left.mid(std::max<qsizetype>(size, left.startsWith(u'=') ? 1 : 0)).trimmed();
        return name;
    }

    static QStringView takeValue(QStringView &left)
    {
        if (!left.startsWith(u'='))
            return {};
        left = left.mid(1).trimmed();
        const bool isQuoted = left.startsWith(u'"') || left.startsWith(u'\'');
        const auto isEnd = [isQuoted, quote = left.isEmpty() ? QChar() : left[0]](QChar c) {
            return isQuoted ? c == quote : c.isSpace();
        };
        const qsizetype begin = isQuoted ? 1 : 0;
        const auto *end = std::find_if(left.begin() + begin, left.end(), isEnd);
        const QStringView value = left.sliced(begin, end - left.begin() - begin);
        left = left.mid(end - left.begin() + begin);
        return value;
    }

    QStringView m_attributes;
};

// Puts flat HTML together.
class Writer
{
public:
    [[nodiscard]] bool isFull() const { return m_left <= 0; }

    void take(const Tag &tag)
    {
        switch (meanings().value(tag.name, Meaning::Unseen)) {
        case Meaning::Line:
            return beginLine(u"p"_s);
        case Meaning::Heading:
            return beginLine(tag.isEnd ? u"p"_s : tag.name);
        case Meaning::Item:
            return beginLine(tag.isEnd ? u"p"_s : u"li"_s);
        case Meaning::List:
            endList();
            m_list = tag.name;
            m_kind = u"p"_s;
            return;
        case Meaning::Cell:
            return tag.isEnd ? void() : addText(u" ");
        case Meaning::LineEnd:
            return m_line.isEmpty() ? void() : add(u"<br>", CostOfALine);
        case Meaning::Rule:
            endList();
            return add(u"<hr>", CostOfALine);
        case Meaning::Bold:
            m_boldDepth = std::max(0, m_boldDepth + (tag.isEnd ? -1 : 1));
            return;
        case Meaning::Italic:
            m_italicDepth = std::max(0, m_italicDepth + (tag.isEnd ? -1 : 1));
            return;
        case Meaning::Link:
            if (!tag.isEnd && m_endsWithLink) // a style kept them apart
                addText(u" ");
            m_link = tag.isEnd ? QString() : tag.attribute(u"href");
            m_link = m_link.size() > LongestLink ? QString() : m_link.replace(u'"', u"&quot;"_s);
            return;
        case Meaning::Unseen:
            return;
        }
    }

    void addText(QStringView text)
    {
        if (text.isEmpty() || (m_line.isEmpty() && text.trimmed().isEmpty()))
            return;
        beginLineIfNone();
        const QStringView shown = text.first(std::clamp<qsizetype>(m_left, 0, text.size()));
        m_isCut = m_isCut || shown.size() < text.size();
        add(dressed(escaped(shown)), shown.size() + m_link.size() + CostOfARun);
        m_endsWithLink = !m_link.isEmpty();
    }

    QString finish(bool isAll)
    {
        endList();
        return isAll && !m_isCut ? m_html : m_html + u"<p>...</p>"_s;
    }

private:
    void add(QStringView html, qsizetype cost)
    {
        m_html += html;
        m_left -= cost;
        m_endsWithLink = false;
    }

    // With places to break long words at, though not within the likes of "&nbsp;".
    QString escaped(QStringView text)
    {
        QString result;
        for (const QChar letter : text) {
            m_wordSize = letter.isSpace() ? 0 : m_wordSize + 1;
            m_sinceAmpersand = letter == u'&' ? 0 : m_sinceAmpersand + 1;
            const bool isWithinOne = m_sinceAmpersand > 0 && m_sinceAmpersand < LongestReference;
            if (m_wordSize > LongestWord && !isWithinOne && !letter.isLowSurrogate()) {
                result += MayBreakHere;
                m_wordSize = 1;
            }
            result += letter == u'<' ? u"&lt;"_s : QString(letter);
        }
        return result;
    }

    [[nodiscard]] QString dressed(QString words) const
    {
        if (m_boldDepth > 0)
            words = u"<b>"_s + words + u"</b>"_s;
        if (m_italicDepth > 0)
            words = u"<i>"_s + words + u"</i>"_s;
        return m_link.isEmpty() ? words : u"<a href=\"%1\">"_s.arg(m_link) + words + u"</a>"_s;
    }

    // The line itself begins with its first word.
    void beginLine(const QString &kind)
    {
        endLine();
        m_kind = kind;
    }

    void beginLineIfNone()
    {
        if (!m_line.isEmpty())
            return;
        if (m_kind != u"li"_s)
            endList();
        else if (m_openList.isEmpty())
            add(u'<' + (m_openList = m_list) + u'>', 0);
        m_line = m_kind;
        add(u'<' + m_line + u'>', CostOfALine);
    }

    void endLine()
    {
        if (!m_line.isEmpty())
            add(u"</"_s + std::exchange(m_line, QString()) + u'>', 0);
        m_wordSize = 0;
    }

    void endList()
    {
        endLine();
        if (!m_openList.isEmpty())
            add(u"</"_s + std::exchange(m_openList, QString()) + u'>', 0);
    }

    QString m_html;
    qsizetype m_left = Budget;
    QString m_kind = u"p"_s;
    QString m_line; // what the open line is; empty while none is
    QString m_list = u"ul"_s;
    QString m_openList;
    QString m_link;
    bool m_endsWithLink = false;
    int m_boldDepth = 0;
    int m_italicDepth = 0;
    bool m_isCut = false;
    qsizetype m_wordSize = 0;
    qsizetype m_sinceAmpersand = LongestReference;
};

// Where the tag that begins at `begin` ends; brackets between quotes do not count.
qsizetype endOfTag(QStringView html, qsizetype begin)
{
    QChar quote;
    for (qsizetype at = begin; at < html.size(); ++at) {
        const QChar c = html[at];
        if (!quote.isNull())
            quote = c == quote ? QChar() : quote;
        else if (c == u'"' || c == u'\'')
            quote = c;
        else if (c == u'>')
            return at;
    }
    return -1;
}

qsizetype behind(QStringView html, QStringView end, qsizetype begin)
{
    const qsizetype at = html.indexOf(end, begin, Qt::CaseInsensitive);
    return at < 0 ? html.size() : at + end.size();
}

// Takes what begins with the bracket at `at`; returns where to go on.
qsizetype takeMarkup(QStringView html, qsizetype at, Writer &writer)
{
    const QStringView rest = html.sliced(at);
    if (rest.startsWith(u"<!--"))
        return behind(html, u"-->", at + 4);
    if (rest.startsWith(u"<!") || rest.startsWith(u"<?"))
        return behind(html, u">", at);
    const bool isEnd = rest.startsWith(u"</");
    if (rest.size() < 3 || !rest[isEnd ? 2 : 1].isLetter()) {
        writer.addText(u"<");
        return at + 1;
    }
    const qsizetype end = endOfTag(html, at);
    if (end < 0)
        return html.size();
    const Tag tag(html.sliced(at + 1, end - at - 1));
    writer.take(tag);
    if (!isEnd && meanings().value(tag.name, Meaning::Link) == Meaning::Unseen)
        return behind(html, u">", behind(html, u"</"_s + tag.name, end));
    return end + 1;
}

} // namespace

QString simpleNews(const QString &page)
{
    const QStringView html = QStringView(page).left(LongestPage);
    Writer writer;
    qsizetype at = 0;
    while (at < html.size() && !writer.isFull()) {
        const qsizetype bracket = html.indexOf(u'<', at);
        const qsizetype end = bracket < 0 ? html.size() : bracket;
        writer.addText(html.sliced(at, end - at));
        at = bracket < 0 ? end : takeMarkup(html, bracket, writer);
    }
    return writer.finish(at == page.size());
}
