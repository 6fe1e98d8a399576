#pragma once

#include "account/BinaryPropertyList.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

// One object with string members, in the platform's keyed archive format: a binary property list
// that holds the object as a table of members which refer to the values by number. A plain value.
class KeyedArchive
{
public:
    explicit KeyedArchive(QString className) : m_className(std::move(className)) {}

    // Members are written in the order in which they are encoded. Keys must be new, and ASCII.
    void encodeObject(const QString &object, const QString &key);
    // Nothing when there is no such member or when it is not a well-formed string.
    [[nodiscard]] std::optional<QString> decodeObjectForKey(const QString &key) const;

    // What was encoded.
    [[nodiscard]] QByteArray archivedData() const;

    // The object of that class at the root of the archive, whoever wrote it, for decoding. Nothing
    // when the data is no such archive, whatever else it is.
    [[nodiscard]] static std::optional<KeyedArchive> unarchive(const QByteArray &data,
                                                               const QString &className);

private:
    struct Source
    {
        BinaryPropertyList list;
        BinaryPropertyList::Number objects;
        BinaryPropertyList::Number object;
    };

    QString m_className;
    QList<std::pair<QString, QString>> m_members; // key, value; those that were encoded
    std::optional<Source> m_source;               // where the others are
};
