#include "account/KeyedArchive.h"

#include <plist/plist.h>

#include <memory>
#include <type_traits>

namespace {

using Number = BinaryPropertyList::Number;

constexpr auto VersionKey = "$version";
constexpr auto ArchiverKey = "$archiver";
constexpr auto TopKey = "$top";
constexpr auto RootKey = "root";
constexpr auto ObjectsKey = "$objects";
constexpr auto ClassKey = "$class";
constexpr auto ClassNameKey = "$classname";
constexpr auto ArchiverName = "NSKeyedArchiver";
constexpr uint64_t Version = 100000;
constexpr uint64_t RootNumber = 1;

struct Deleter
{
    void operator()(plist_t node) const { plist_free(node); }
};
using Tree = std::unique_ptr<std::remove_pointer_t<plist_t>, Deleter>;

plist_t makeString(const QString &text) { return plist_new_string(text.toUtf8().constData()); }

plist_t makeClass(const QString &className)
{
    plist_t classes = plist_new_array();
    plist_array_append_item(classes, makeString(className));
    plist_array_append_item(classes, plist_new_string("NSObject"));
    plist_t result = plist_new_dict();
    plist_dict_set_item(result, ClassNameKey, makeString(className));
    plist_dict_set_item(result, "$classes", classes);
    return result;
}

// The object that a member refers to; nothing when the number leads nowhere or to the first object,
// which stands for none.
std::optional<Number> referredTo(const BinaryPropertyList &list, Number objects, Number table,
                                 QLatin1String key)
{
    const auto reference = list.member(table, key);
    const auto place = reference ? list.uid(*reference) : std::nullopt;
    return place.value_or(0) == 0 ? std::nullopt : list.element(objects, *place);
}

std::optional<QString> stringMember(const BinaryPropertyList &list, Number table, const char *key)
{
    const auto member = list.member(table, QLatin1String(key));
    return member ? list.string(*member) : std::nullopt;
}

bool isKeyedArchive(const BinaryPropertyList &list)
{
    const auto version = list.member(list.top(), QLatin1String(VersionKey));
    return version && list.integer(*version) == Version &&
           stringMember(list, list.top(), ArchiverKey) == QLatin1String(ArchiverName);
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
    if (!m_source)
        return std::nullopt;
    const QByteArray name = key.toLatin1();
    const auto value =
        referredTo(m_source->list, m_source->objects, m_source->object, QLatin1String(name));
    return value ? m_source->list.string(*value) : std::nullopt;
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
    plist_dict_set_item(object, ClassKey, plist_new_uid(plist_array_get_size(objects)));
    plist_array_append_item(objects, makeClass(m_className));

    plist_t top = plist_new_dict();
    plist_dict_set_item(top, RootKey, plist_new_uid(RootNumber));
    const Tree archive(plist_new_dict());
    plist_dict_set_item(archive.get(), VersionKey, plist_new_uint(Version));
    plist_dict_set_item(archive.get(), ArchiverKey, plist_new_string(ArchiverName));
    plist_dict_set_item(archive.get(), TopKey, top);
    plist_dict_set_item(archive.get(), ObjectsKey, objects);

    char *bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(archive.get(), &bytes, &length);
    QByteArray result(bytes, qsizetype(length));
    plist_to_bin_free(bytes);
    return result;
}

// libplist builds the whole tree first, and a nested or inflated one takes the stack or the memory.
std::optional<KeyedArchive> KeyedArchive::unarchive(const QByteArray &data,
                                                    const QString &className)
{
    const auto list = BinaryPropertyList::open(data);
    if (!list || !isKeyedArchive(*list))
        return std::nullopt;
    const auto objects = list->member(list->top(), QLatin1String(ObjectsKey));
    const auto top = list->member(list->top(), QLatin1String(TopKey));
    if (!objects || !top)
        return std::nullopt;
    const auto object = referredTo(*list, *objects, *top, QLatin1String(RootKey));
    const auto objectClass =
        object ? referredTo(*list, *objects, *object, QLatin1String(ClassKey)) : std::nullopt;
    if (!objectClass || stringMember(*list, *objectClass, ClassNameKey) != className)
        return std::nullopt;
    KeyedArchive result(className);
    result.m_source = Source{*list, *objects, *object};
    return result;
}
