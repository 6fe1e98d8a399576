#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Reads single objects of a binary property list where they lie, so that no data, however nested,
// cyclic or inflated, costs more than the objects that are asked for. Objects are known by their
// numbers; a number that leads nowhere and an object of another kind yield nothing. A plain value.
class BinaryPropertyList
{
public:
    using Number = quint64;

    // Nothing when head or trailer are not those of a binary property list.
    [[nodiscard]] static std::optional<BinaryPropertyList> open(const QByteArray &data);

    // The object that holds all others.
    [[nodiscard]] Number top() const { return m_top; }

    // Nothing, too, for a text that is not well-formed.
    [[nodiscard]] std::optional<QString> string(Number object) const;
    [[nodiscard]] std::optional<quint64> integer(Number object) const;
    // The value of a reference of a keyed archive.
    [[nodiscard]] std::optional<quint64> uid(Number object) const;
    // The object at that place of an array.
    [[nodiscard]] std::optional<Number> element(Number array, quint64 place) const;
    // The object with that key, which is ASCII, in a dictionary; the first of several.
    [[nodiscard]] std::optional<Number> member(Number dictionary, QLatin1String key) const;

private:
    enum Kind : int {
        Integer = 0x1,
        Ascii = 0x5,
        Utf16 = 0x6,
        Uid = 0x8,
        Array = 0xa,
        Dictionary = 0xd
    };
    // What follows an object's first byte: its items begin at `begin`.
    struct Items
    {
        qsizetype begin;
        quint64 count;
    };

    explicit BinaryPropertyList(QByteArray data) : m_data(std::move(data)) {}

    [[nodiscard]] bool readTrailer();
    [[nodiscard]] bool isAscii(Number object, QLatin1String text) const;
    [[nodiscard]] std::optional<qsizetype> place(Number object) const;
    [[nodiscard]] std::optional<Items> items(Number object, Kind kind, quint64 itemSize) const;
    [[nodiscard]] std::optional<quint64> sized(qsizetype place, Kind kind, int size) const;
    [[nodiscard]] std::optional<quint64> unsignedAt(quint64 place, quint64 size) const;

    QByteArray m_data;
    quint64 m_offsetSize = 0;
    quint64 m_referenceSize = 0;
    quint64 m_count = 0;
    Number m_top = 0;
    quint64 m_table = 0; // where the objects' places are listed
};
