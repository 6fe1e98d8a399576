#include "SelfServingHttpClient.h"

#include <algorithm>
#include <chrono>

SelfServingHttpClient::SelfServingHttpClient(Answer answer) : m_answer(std::move(answer))
{
    onConnection = [this](const std::shared_ptr<FakeConnection> &connection) {
        connection->onStart = [this, started = std::weak_ptr(connection)] {
            begin(started.lock());
        };
        connection->onPaused = [this](bool isPaused) {
            m_pauseCount += isPaused;
            const std::lock_guard lock(m_mutex);
            m_changed.notify_all();
        };
    };
    m_thread = std::thread([this] { run(); });
}

SelfServingHttpClient::~SelfServingHttpClient()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        m_changed.notify_all();
    }
    m_thread.join();
}

void SelfServingHttpClient::begin(const std::shared_ptr<FakeConnection> &connection)
{
    const std::lock_guard lock(m_mutex);
    const int atOnce = ++m_atOnce;
    m_mostAtOnce = std::max(m_mostAtOnce.load(), atOnce);
    m_waiting.push_back(connection);
    m_changed.notify_all();
}

std::shared_ptr<FakeConnection> SelfServingHttpClient::takeReady()
{
    std::unique_lock lock(m_mutex);
    m_isServing = false;
    m_changed.notify_all();
    std::shared_ptr<FakeConnection> ready;
    m_changed.wait(lock, [this, &ready] {
        const auto found = std::find_if(m_waiting.begin(), m_waiting.end(),
                                        [](const auto &waiting) { return !waiting->isPaused(); });
        if (found != m_waiting.end()) {
            ready = *found;
            m_waiting.erase(found);
        }
        return ready || m_isEnding;
    });
    m_isServing = ready != nullptr;
    return ready;
}

bool SelfServingHttpClient::waitUntilSilent()
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::minutes(1),
                              [this] { return m_waiting.empty() && !m_isServing; });
}

void SelfServingHttpClient::run()
{
    while (const auto connection = takeReady())
        serve(*connection);
}

void SelfServingHttpClient::serve(FakeConnection &connection)
{
    const auto body = m_answer(connection.request().url);
    if (body) {
        connection.respond(body->size());
        if (!body->isEmpty())
            connection.receive(*body);
    }
    --m_atOnce;
    if (body)
        connection.finish();
    else
        connection.fail(QStringLiteral("gone"));
}
