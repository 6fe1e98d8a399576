#include "account/KeyedArchive.h"

#include <plist/plist.h>

#include <limits>
#include <memory>
#include <type_traits>

namespace {

constexpr auto ArchiverName = "NSKeyedArchiver";
constexpr uint64_t Version = 100000;
constexpr uint64_t RootNumber = 1;

struct Deleter
{
    void operator()(plist_t node) const { plist_free(node); }
};
using Tree = std::unique_ptr<std::remove_pointer_t<plist_t>, Deleter>;

plist_t makeString(const QString &text) { return plist_new_string(text.toUtf8().constData()); }

std::optional<QString> stringOf(plist_t node)
{
    if (!PLIST_IS_STRING(node))
        return std::nullopt;
    uint64_t length = 0;
    const char *const bytes = plist_get_string_ptr(node, &length);
    return QString::fromUtf8(bytes, qsizetype(length));
}

// The object that a member refers to; null when the number leads nowhere or to the first object,
// which stands for none.
plist_t referredTo(plist_t objects, plist_t reference)
{
    if (!PLIST_IS_UID(reference))
        return nullptr;
    uint64_t number = 0;
    plist_get_uid_val(reference, &number);
    if (number == 0 || number >= plist_array_get_size(objects))
        return nullptr;
    return plist_array_get_item(objects, uint32_t(number));
}

plist_t memberOf(plist_t dictionary, const char *key)
{
    return PLIST_IS_DICT(dictionary) ? plist_dict_get_item(dictionary, key) : nullptr;
}

plist_t makeClass(const QString &className)
{
    plist_t classes = plist_new_array();
    plist_array_append_item(classes, makeString(className));
    plist_array_append_item(classes, plist_new_string("NSObject"));
    plist_t result = plist_new_dict();
    plist_dict_set_item(result, "$classname", makeString(className));
    plist_dict_set_item(result, "$classes", classes);
    return result;
}

bool isKeyedArchive(plist_t archive)
{
    uint64_t version = 0;
    plist_t const versionNode = memberOf(archive, "$version");
    if (PLIST_IS_UINT(versionNode))
        plist_get_uint_val(versionNode, &version);
    return version == Version && PLIST_IS_ARRAY(memberOf(archive, "$objects")) &&
           stringOf(memberOf(archive, "$archiver")) == QString::fromLatin1(ArchiverName);
}

QList<std::pair<QString, QString>> stringMembersOf(plist_t object, plist_t objects)
{
    QList<std::pair<QString, QString>> members;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(object, &iterator);
    const std::unique_ptr<void, decltype(&free)> iteratorOwner(iterator, &free);
    for (;;) {
        char *key = nullptr;
        plist_t reference = nullptr;
        plist_dict_next_item(object, iterator, &key, &reference);
        const std::unique_ptr<char, decltype(&free)> keyOwner(key, &free);
        if (!reference)
            return members;
        if (const auto value = stringOf(referredTo(objects, reference)))
            members.emplace_back(QString::fromUtf8(key), *value);
    }
}

} // namespace

void KeyedArchive::encodeObject(const QString &object, const QString &key)
{
    m_members.emplace_back(key, object);
}

std::optional<QString> KeyedArchive::decodeObjectForKey(const QString &key) const
{
    for (const auto &[name, value] : m_members) {
        if (name == key)
            return value;
    }
    return std::nullopt;
}

QByteArray KeyedArchive::archivedData() const
{
    plist_t object = plist_new_dict();
    plist_t objects = plist_new_array();
    plist_array_append_item(objects, plist_new_string("$null"));
    plist_array_append_item(objects, object);
    for (const auto &[key, value] : m_members) {
        plist_dict_set_item(object, key.toUtf8().constData(),
                            plist_new_uid(plist_array_get_size(objects)));
        plist_array_append_item(objects, makeString(value));
    }
    plist_dict_set_item(object, "$class", plist_new_uid(plist_array_get_size(objects)));
    plist_array_append_item(objects, makeClass(m_className));

    plist_t top = plist_new_dict();
    plist_dict_set_item(top, "root", plist_new_uid(RootNumber));
    const Tree archive(plist_new_dict());
    plist_dict_set_item(archive.get(), "$version", plist_new_uint(Version));
    plist_dict_set_item(archive.get(), "$archiver", plist_new_string(ArchiverName));
    plist_dict_set_item(archive.get(), "$top", top);
    plist_dict_set_item(archive.get(), "$objects", objects);

    char *bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(archive.get(), &bytes, &length);
    const QByteArray result(bytes, qsizetype(length));
    plist_to_bin_free(bytes);
    return result;
}

std::optional<KeyedArchive> KeyedArchive::unarchive(const QByteArray &data,
                                                    const QString &className)
{
    if (data.size() > std::numeric_limits<int>::max() ||
        !plist_is_binary(data.constData(), uint32_t(data.size())))
        return std::nullopt;
    plist_t parsed = nullptr;
    plist_from_bin(data.constData(), uint32_t(data.size()), &parsed);
    const Tree archive(parsed);
    if (!isKeyedArchive(archive.get()))
        return std::nullopt;

    plist_t const objects = memberOf(archive.get(), "$objects");
    plist_t const object = referredTo(objects, memberOf(memberOf(archive.get(), "$top"), "root"));
    plist_t const objectClass = referredTo(objects, memberOf(object, "$class"));
    if (stringOf(memberOf(objectClass, "$classname")) != className)
        return std::nullopt;
    KeyedArchive result(className);
    result.m_members = stringMembersOf(object, objects);
    return result;
}
