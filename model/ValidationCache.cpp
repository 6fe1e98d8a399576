#include "model/ValidationCache.h"

#include "app/ErrorHandler.h"
#include "platform/UserDefaults.h"

ValidationCache::ValidationCache(UserDefaults &userDefaults, QString folder)
    : m_userDefaults(userDefaults), m_folder(std::move(folder))
{
}

bool ValidationCache::isTrusted(const Keys &keys, const std::optional<Date> &modified,
                                const std::optional<QString> &hash)
{
    if (!modified || !hash || m_userDefaults.date(keys.date) != modified ||
        m_userDefaults.string(keys.hash) != hash)
        return false;
    ++m_trustedCount;
    return true;
}

void ValidationCache::record(const Keys &keys, const std::optional<Date> &modified,
                             const QString &hash)
{
    if (!modified) {
        forget(keys);
        return;
    }
    if (!std::exchange(m_isSynchronized, true)) {
        if (const auto error = FileSystem::synchronize(m_folder))
            ErrorHandler::log(*error);
    }
    m_userDefaults.set(keys.date, *modified);
    m_userDefaults.set(keys.hash, hash);
}

void ValidationCache::forget(const Keys &keys)
{
    m_userDefaults.remove(keys.date);
    m_userDefaults.remove(keys.hash);
}
