#pragma once

#include "Certificates.h"

#include <QByteArray>
#include <QList>
#include <QThread>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

using HttpHeaders = QList<std::pair<QByteArray, QByteArray>>;

// One request as it came in.
struct TestRequest
{
    QByteArray method;
    QByteArray target; // path and query, as sent
    QByteArray head;   // all lines with their line ends, without the empty one
    QByteArray body;

    // The values of all headers of that name, whatever its case.
    [[nodiscard]] QList<QByteArray> header(const QByteArray &name) const;
};

// What the server does with one request: steps taken one after the other. After the last step the
// connection stays open for the next request.
class TestReply
{
public:
    struct Wait // for TestServer::release()
    {
    };
    struct Close // in good order, after all that was sent
    {
    };
    struct Reset // at once; what is not yet on the wire is lost
    {
    };
    using Step = std::variant<QByteArray, Wait, Close, Reset>;

    TestReply() = default;
    explicit TestReply(std::vector<Step> steps) : m_steps(std::move(steps)) {}

    // A whole answer, correct in every way.
    static TestReply whole(const QByteArray &body, int status = 200,
                           const HttpHeaders &headers = {});
    static TestReply redirect(const QUrl &to, int status = 302);
    // Announces that many bytes, whatever the body's true size, and closes after the body.
    static TestReply announcing(qint64 length, const QByteArray &body);
    // Sends that many bytes of the body after a correct head, then closes or resets.
    static TestReply cut(const QByteArray &body, qsizetype after);
    static TestReply reset(const QByteArray &body, qsizetype after);
    // No length; the end of the connection is the end of the body.
    static TestReply closeDelimited(const QByteArray &body);
    // Chunked transfer: the body whole and in order, or ending in a chunk head that is none.
    static TestReply chunked(const QByteArray &body);
    static TestReply badChunk(const QByteArray &body);
    // A correct answer of which that many bytes of the body are sent; the rest waits for release().
    static TestReply stalled(const QByteArray &body, qsizetype after = 0);
    // A correct answer; each piece of its body waits for a release() of its own.
    static TestReply inPieces(const QList<QByteArray> &pieces);

    [[nodiscard]] const std::vector<Step> &steps() const { return m_steps; }

private:
    std::vector<Step> m_steps;
};

// A web server for tests, on 127.0.0.1 and a free port, on a thread of its own. Requests that no
// route and no handler knows are answered with 404. Its functions belong to the test's thread.
class TestServer
{
public:
    enum class Scheme { Https, Http };
    // Answers every request; runs on the server's thread.
    using Handler = std::function<TestReply(const TestRequest &)>;

    explicit TestServer(const Certificates::Identity &identity = Certificates::shared().localhost(),
                        Scheme scheme = Scheme::Https);
    explicit TestServer(Scheme scheme) : TestServer(Certificates::shared().localhost(), scheme) {}
    // Drops all connections, waiting ones as well.
    ~TestServer();
    TestServer(const TestServer &) = delete;
    TestServer &operator=(const TestServer &) = delete;

    // Answers each request for that path (without its query) so. A later route for the same path
    // takes the place of the earlier.
    void route(const QByteArray &path, const TestReply &reply);
    // For what has no route.
    void setHandler(Handler handler);

    // Lets that many waiting steps go on, the one that has waited longest first; of steps to come
    // when none waits.
    void release(int steps = 1);
    // Waits until so many replies wait for release() at once. False when that took too long.
    [[nodiscard]] bool waitForWaiting(int replies = 1,
                                      std::chrono::milliseconds limit = DefaultLimit) const;
    // Waits until so many whole requests have come in all. False when that took too long.
    [[nodiscard]] bool waitForRequests(int requests,
                                       std::chrono::milliseconds limit = DefaultLimit) const;

    [[nodiscard]] QUrl url(const QByteArray &path = "/") const;
    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QList<TestRequest> requests() const;
    [[nodiscard]] int requestCount(const QByteArray &path) const;
    // Every byte that clients sent, whether or not it made a whole request.
    [[nodiscard]] QByteArray receivedBytes() const;
    // How many bytes the clients' systems have taken, encryption included.
    [[nodiscard]] qint64 sentByteCount() const;

private:
    static constexpr std::chrono::milliseconds DefaultLimit{20000};
    struct State;
    class Listener;
    class Connection;

    // On the server's thread, soon.
    void run(std::function<void()> command) const;

    const Scheme m_scheme;
    const std::shared_ptr<State> m_state;
    quint16 m_port = 0;
    Listener *m_listener = nullptr; // lives on m_thread, which deletes it when it ends
    QThread m_thread;
};
