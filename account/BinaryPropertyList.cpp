#include "account/BinaryPropertyList.h"

#include <QtEndian>

#include <algorithm>

namespace {

constexpr auto Head = "bplist00";
constexpr qsizetype TrailerSize = 32;
constexpr quint64 LongestNumber = 8;
constexpr int CountFollows = 0xf;

} // namespace

std::optional<BinaryPropertyList> BinaryPropertyList::open(const QByteArray &data)
{
    BinaryPropertyList list(data);
    if (!data.startsWith(Head) || data.size() < qsizetype(qstrlen(Head)) + TrailerSize ||
        !list.readTrailer())
        return std::nullopt;
    return list;
}

// Six unused bytes, the sizes of a place and of a reference, and three numbers of eight bytes.
bool BinaryPropertyList::readTrailer()
{
    const auto trailer = quint64(m_data.size() - TrailerSize);
    m_offsetSize = unsignedAt(trailer + 6, 1).value_or(0);
    m_referenceSize = unsignedAt(trailer + 7, 1).value_or(0);
    m_count = unsignedAt(trailer + 8, LongestNumber).value_or(0);
    m_top = unsignedAt(trailer + 16, LongestNumber).value_or(0);
    m_table = unsignedAt(trailer + 24, LongestNumber).value_or(0);
    const auto isSize = [](quint64 size) { return size >= 1 && size <= LongestNumber; };
    return isSize(m_offsetSize) && isSize(m_referenceSize) && m_table <= trailer &&
           m_count <= (trailer - m_table) / m_offsetSize;
}

std::optional<QString> BinaryPropertyList::string(Number object) const
{
    if (const auto ascii = items(object, Ascii, 1)) {
        const QByteArray bytes = m_data.mid(ascii->begin, qsizetype(ascii->count));
        const bool isAscii =
            std::all_of(bytes.begin(), bytes.end(), [](char byte) { return (byte & 0x80) == 0; });
        return isAscii ? std::optional(QString::fromLatin1(bytes)) : std::nullopt;
    }
    const auto wide = items(object, Utf16, 2);
    if (!wide)
        return std::nullopt;
    QString text(qsizetype(wide->count), Qt::Uninitialized);
    qFromBigEndian<char16_t>(m_data.constData() + wide->begin, text.size(), text.data());
    return text.isValidUtf16() ? std::optional(text) : std::nullopt;
}

std::optional<quint64> BinaryPropertyList::integer(Number object) const
{
    const auto at = place(object);
    const int power = at ? m_data.at(*at) & 0xf : 0;
    return at && power <= 3 ? sized(*at, Integer, 1 << power) : std::nullopt;
}

std::optional<quint64> BinaryPropertyList::uid(Number object) const
{
    const auto at = place(object);
    return at ? sized(*at, Uid, (m_data.at(*at) & 0xf) + 1) : std::nullopt;
}

std::optional<BinaryPropertyList::Number> BinaryPropertyList::element(Number array,
                                                                      quint64 place) const
{
    const auto elements = items(array, Array, m_referenceSize);
    if (!elements || place >= elements->count)
        return std::nullopt;
    return unsignedAt(quint64(elements->begin) + place * m_referenceSize, m_referenceSize);
}

// All keys come before all values.
std::optional<BinaryPropertyList::Number> BinaryPropertyList::member(Number dictionary,
                                                                     QLatin1String key) const
{
    const auto pairs = items(dictionary, Dictionary, 2 * m_referenceSize);
    for (quint64 i = 0; pairs && i < pairs->count; ++i) {
        const quint64 keyPlace = quint64(pairs->begin) + i * m_referenceSize;
        const auto keyObject = unsignedAt(keyPlace, m_referenceSize);
        if (keyObject && isAscii(*keyObject, key))
            return unsignedAt(keyPlace + pairs->count * m_referenceSize, m_referenceSize);
    }
    return std::nullopt;
}

// Looks at no more bytes than the text has, as millions of keys may be one huge string.
bool BinaryPropertyList::isAscii(Number object, QLatin1String text) const
{
    const auto bytes = items(object, Ascii, 1);
    return bytes && bytes->count == quint64(text.size()) &&
           QByteArrayView(m_data).sliced(bytes->begin, text.size()) ==
               QByteArrayView(text.data(), text.size());
}

std::optional<qsizetype> BinaryPropertyList::place(Number object) const
{
    if (object >= m_count)
        return std::nullopt;
    const auto place = unsignedAt(m_table + object * m_offsetSize, m_offsetSize);
    return place && *place < m_table ? std::optional(qsizetype(*place)) : std::nullopt;
}

// The first byte has the kind and the count, or the mark that the count follows as an integer.
std::optional<BinaryPropertyList::Items> BinaryPropertyList::items(Number object, Kind kind,
                                                                   quint64 itemSize) const
{
    const auto at = place(object);
    if (!at || (m_data.at(*at) >> 4 & 0xf) != kind)
        return std::nullopt;
    Items items{*at + 1, quint64(m_data.at(*at) & 0xf)};
    if (items.count == CountFollows) {
        const int power = m_data.at(items.begin) & 0xf;
        const auto count = power <= 3 ? sized(items.begin, Integer, 1 << power) : std::nullopt;
        if (!count)
            return std::nullopt;
        items = {items.begin + 1 + (1 << power), *count};
    }
    const auto begin = quint64(items.begin);
    if (begin > m_table || items.count > (m_table - begin) / itemSize)
        return std::nullopt;
    return items;
}

// A number of that kind and size with its first byte.
std::optional<quint64> BinaryPropertyList::sized(qsizetype place, Kind kind, int size) const
{
    if ((m_data.at(place) >> 4 & 0xf) != kind)
        return std::nullopt;
    return unsignedAt(quint64(place) + 1, quint64(size));
}

std::optional<quint64> BinaryPropertyList::unsignedAt(quint64 place, quint64 size) const
{
    const auto end = quint64(m_data.size());
    if (size > LongestNumber || place > end || size > end - place)
        return std::nullopt;
    quint64 number = 0;
    for (quint64 i = 0; i < size; ++i)
        number = number << 8 | quint8(m_data.at(qsizetype(place + i)));
    return number;
}
