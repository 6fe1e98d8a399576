#pragma once

#include "platform/FileLock.h"

#include <QString>

// Only one launcher a user and data folder: the lock that it holds there. It goes with the object,
// and with the process however that ends. One thread at a time.
class InstanceLock
{
public:
    // Makes the data folder when it is missing.
    explicit InstanceLock(const QString &dataFolder);

    // True when this process may go on: it has the lock now, or the lock cannot be had at all (a
    // folder that cannot be written), which is logged. False when another launcher has it. Does not
    // wait for it.
    [[nodiscard]] bool tryToTake();

    [[nodiscard]] const QString &dataFolder() const { return m_dataFolder; }

private:
    const QString m_dataFolder;
    FileLock m_lock;
};
