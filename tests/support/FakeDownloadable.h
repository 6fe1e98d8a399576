#pragma once

#include "patcher/Downloadable.h"

#include <mutex>

// A file in memory. It keeps what it was given to write and reports what it was told to; it can
// also hold its completion back until the test wants it.
class FakeDownloadable : public Downloadable
{
public:
    explicit FakeDownloadable(const QUrl &url) : m_url(url) {}
    // The file with that name on the host that FakeHttpClient stands for.
    static std::shared_ptr<FakeDownloadable> named(const QString &name);

    // Set before the download ends.
    std::optional<Error> error;
    std::optional<QString> logText = QString();
    bool holdsCompletion = false;
    // Called on the write queue before anything else.
    std::function<void()> onWrite;

    [[nodiscard]] QUrl downloadURL() const override { return m_url; }
    void writeToDisk(const std::optional<QByteArray> &data,
                     const WriteCompletion &completion) override;

    // How often it was told to write, and the data of the last time; "nothing" without data.
    [[nodiscard]] int writeCount() const;
    [[nodiscard]] QByteArray data() const;
    // Calls the completion that was held back.
    void complete();
    // Forgets it.
    void dropCompletion();

private:
    const QUrl m_url;
    mutable std::mutex m_mutex;
    WriteCompletion m_completion;
    QByteArray m_data;
    int m_writeCount = 0;
};
