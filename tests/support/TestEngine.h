#pragma once

#include "FakeDownloadable.h"
#include "FakeHttpClient.h"
#include "RecordingDelegate.h"
#include "patcher/VARNOPatcher.h"
#include "platform/DispatchQueue.h"

// A download engine whose connections the test drives by hand. At its end it waits for all writes.
struct TestEngine
{
    using Files = QList<std::shared_ptr<FakeDownloadable>>;

    explicit TestEngine(qint64 waitingBytesLimit = VARNOPatcher::WaitingBytesLimit)
        : patcher(std::make_shared<VARNOPatcher>(client, waitingBytesLimit))
    {
        patcher->setDelegate(delegate);
    }
    ~TestEngine() { waitForWrites(); }
    TestEngine(const TestEngine &) = delete;
    TestEngine &operator=(const TestEngine &) = delete;

    // Enqueues a file a name.
    Files enqueue(const QStringList &names) const
    {
        Files files;
        for (const QString &name : names) {
            files += FakeDownloadable::named(name);
            patcher->enqueueWithFile(files.last());
        }
        return files;
    }
    // The same with files whose completions the test calls.
    Files enqueueHolding(const QStringList &names) const
    {
        Files files;
        for (const QString &name : names) {
            files += FakeDownloadable::named(name);
            files.last()->holdsCompletion = true;
            patcher->enqueueWithFile(files.last());
        }
        return files;
    }

    // Until no write queue has anything to do.
    static void waitForWrites()
    {
        if (!DispatchQueue::drain(Limit))
            qFatal("a write does not end");
    }
    // Delivers the newest connection's body and waits until it has been handed to its file.
    void deliver(const QByteArray &body) const
    {
        client.last()->deliver(body);
        waitForWrites();
    }

    static constexpr int Limit = 60000;

    FakeHttpClient client;
    const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::shared_ptr<VARNOPatcher> patcher;
};
