#include "Workload.h"

#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

namespace Workload {

bool isQuick()
{
    static const bool result = qEnvironmentVariableIsSet("QUELLMOOR_BENCH_QUICK");
    return result;
}

QByteArray realBytes(qint64 count)
{
    QStringList names;
    QDirIterator folder(QStringLiteral("/usr/lib"), {QStringLiteral("*.so*")},
                        QDir::Files | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (folder.hasNext())
        names += folder.next();
    names.sort();

    QByteArray bytes;
    bytes.reserve(count);
    for (const QString &name : names) {
        QFile file(name);
        if (file.open(QIODevice::ReadOnly))
            bytes += file.read(count - bytes.size());
        if (bytes.size() == count)
            return bytes;
    }
    qFatal("/usr/lib holds less than %lld bytes of libraries", (long long)count);
}

QString scratchFolder()
{
    static const QTemporaryDir folder;
    if (!folder.isValid())
        qFatal("no temporary folder: %s", qUtf8Printable(folder.errorString()));
    return folder.path();
}

} // namespace Workload
