#include "FakeDownloadable.h"

std::shared_ptr<FakeDownloadable> FakeDownloadable::named(const QString &name)
{
    return std::make_shared<FakeDownloadable>(
        QUrl(QStringLiteral("https://h/mac/%1.bz2").arg(name)));
}

void FakeDownloadable::writeToDisk(const std::optional<QByteArray> &data,
                                   const WriteCompletion &completion)
{
    if (onWrite)
        onWrite();
    {
        const std::lock_guard lock(m_mutex);
        m_data = data.value_or(QByteArrayLiteral("nothing"));
        m_completion = completion;
        ++m_writeCount;
    }
    if (!holdsCompletion)
        complete();
}

int FakeDownloadable::writeCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_writeCount;
}

QByteArray FakeDownloadable::data() const
{
    const std::lock_guard lock(m_mutex);
    return m_data;
}

void FakeDownloadable::complete()
{
    WriteCompletion completion;
    {
        const std::lock_guard lock(m_mutex);
        completion = std::exchange(m_completion, nullptr);
    }
    completion(QStringLiteral("disk ") + m_url.fileName().remove(QStringLiteral(".bz2")), error,
               logText);
}

void FakeDownloadable::dropCompletion()
{
    WriteCompletion dropped;
    const std::lock_guard lock(m_mutex);
    dropped.swap(m_completion);
}
