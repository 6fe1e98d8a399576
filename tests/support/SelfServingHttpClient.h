#pragma once

#include "FakeHttpClient.h"

#include <condition_variable>
#include <deque>
#include <thread>

// Connections that answer by themselves, all on one thread of the client's own as those of a real
// one do. A paused connection says nothing until it goes on.
class SelfServingHttpClient : public FakeHttpClient
{
public:
    // The body for a URL; nothing lets the exchange fail. Called on the client's thread.
    using Answer = std::function<std::optional<QByteArray>(const QUrl &url)>;

    explicit SelfServingHttpClient(Answer answer);
    // Ends after the exchange that is under way.
    ~SelfServingHttpClient() override;
    SelfServingHttpClient(const SelfServingHttpClient &) = delete;
    SelfServingHttpClient &operator=(const SelfServingHttpClient &) = delete;

    // Until it has said everything about the exchanges begun so far. False when that takes too
    // long.
    [[nodiscard]] bool waitUntilSilent();
    // The most exchanges that were ever under way at once.
    [[nodiscard]] int mostAtOnce() const { return m_mostAtOnce; }
    [[nodiscard]] int pauseCount() const { return m_pauseCount; }

private:
    void run();
    void begin(const std::shared_ptr<FakeConnection> &connection);
    [[nodiscard]] std::shared_ptr<FakeConnection> takeReady();
    void serve(FakeConnection &connection);

    const Answer m_answer;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<FakeConnection>> m_waiting;
    bool m_isServing = false;
    bool m_isEnding = false;
    std::atomic<int> m_atOnce = 0;
    std::atomic<int> m_mostAtOnce = 0;
    std::atomic<int> m_pauseCount = 0;
    std::thread m_thread;
};
