#include "app/InstanceLock.h"

#include "app/ErrorHandler.h"
#include "platform/FileSystem.h"

InstanceLock::InstanceLock(const QString &dataFolder)
    : m_dataFolder(dataFolder), m_lock(dataFolder + QStringLiteral("/.launcher.lock"))
{
    if (const auto error = FileSystem::createDirectory(dataFolder))
        ErrorHandler::log(*error);
}

bool InstanceLock::tryToTake()
{
    const FileLock::Result result = m_lock.tryLock();
    if (result == FileLock::Result::Failed)
        ErrorHandler::log(QStringLiteral("Cannot lock the launcher data folder."));
    return result != FileLock::Result::Held;
}
