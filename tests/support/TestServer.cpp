#include "TestServer.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QHash>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>
#include <QTest>

#include <sys/socket.h>

#include <deque>
#include <future>
#include <mutex>
#include <vector>

// What the test's thread and the server's thread share.
struct TestServer::State
{
    std::mutex mutex;
    QHash<QByteArray, TestReply> routes;
    Handler handler;
    std::vector<TestRequest> requests;
    QByteArray receivedBytes;
    int waitingCount = 0;
    std::deque<std::function<void()>> commands; // of the test, for the server's thread

    TestReply answer(const TestRequest &request)
    {
        const std::lock_guard lock(mutex);
        requests.push_back(request);
        const auto found = routes.constFind(request.target.split('?').first());
        if (found != routes.cend())
            return *found;
        return handler ? handler(request) : TestReply::whole("not found", 404);
    }
};

// Accepts the clients and lets waiting replies go on. Lives on the server's thread.
class TestServer::Listener : public QTcpServer
{
public:
    Listener(std::shared_ptr<State> state, const Certificates::Identity &identity, Scheme scheme);
    ~Listener() override;

    void release(int steps);
    // True: go on at once. False: the connection will be told to.
    bool mayGoOn(Connection *connection);
    void forget(Connection *connection);
    void addWritten(qint64 count) { m_writtenByteCount += count; }
    [[nodiscard]] qint64 sentByteCount() const;
    [[nodiscard]] State &state() const { return *m_state; }

protected:
    void incomingConnection(qintptr descriptor) override;
    // Runs the commands.
    void customEvent(QEvent *event) override;

private:
    void publishWaitingCount();

    const std::shared_ptr<State> m_state;
    const Scheme m_scheme;
    QSslConfiguration m_sslConfiguration;
    std::deque<Connection *> m_waiting;
    int m_releases = 0;
    qint64 m_writtenByteCount = 0;
};

// One client: its requests are answered one after the other.
class TestServer::Connection : public QObject
{
public:
    Connection(Listener &listener, qintptr descriptor, const QSslConfiguration *sslConfiguration);
    ~Connection() override { m_listener.forget(this); }

    // Takes the steps that are left, up to one that has to wait.
    void goOn();
    [[nodiscard]] qint64 unsentByteCount() const { return m_socket.encryptedBytesToWrite(); }

private:
    void receive();
    void takeRequest();
    bool take(const QByteArray &bytes);
    bool take(TestReply::Wait);
    bool take(TestReply::Close);
    bool take(TestReply::Reset);

    Listener &m_listener;
    QSslSocket m_socket;
    QByteArray m_input;
    std::deque<TestReply::Step> m_steps;
};

TestServer::Connection::Connection(Listener &listener, qintptr descriptor,
                                   const QSslConfiguration *sslConfiguration)
    : QObject(&listener), m_listener(listener)
{
    connect(&m_socket, &QSslSocket::readyRead, this, &Connection::receive);
    connect(&m_socket, &QSslSocket::disconnected, this, &QObject::deleteLater);
    const auto add = [this](qint64 count) { m_listener.addWritten(count); };
    m_socket.setSocketDescriptor(descriptor);
    if (sslConfiguration) {
        connect(&m_socket, &QSslSocket::encryptedBytesWritten, this, add);
        m_socket.setSslConfiguration(*sslConfiguration);
        m_socket.startServerEncryption();
    } else {
        connect(&m_socket, &QSslSocket::bytesWritten, this, add);
    }
}

void TestServer::Connection::receive()
{
    const QByteArray bytes = m_socket.readAll();
    {
        const std::lock_guard lock(m_listener.state().mutex);
        m_listener.state().receivedBytes += bytes;
    }
    m_input += bytes;
    takeRequest();
}

void TestServer::Connection::takeRequest()
{
    const qsizetype endOfHead = m_input.indexOf("\r\n\r\n");
    if (!m_steps.empty() || endOfHead < 0)
        return;
    TestRequest request;
    request.head = m_input.left(endOfHead + 2);
    const QList<QByteArray> words = request.head.left(request.head.indexOf('\r')).split(' ');
    request.method = words.value(0);
    request.target = words.value(1);
    const qsizetype length = request.header("Content-Length").value(0).toLongLong();
    if (m_input.size() < endOfHead + 4 + length)
        return;
    request.body = m_input.mid(endOfHead + 4, length);
    m_input.remove(0, endOfHead + 4 + length);

    const TestReply reply = m_listener.state().answer(request);
    m_steps.assign(reply.steps().begin(), reply.steps().end());
    goOn();
}

void TestServer::Connection::goOn()
{
    while (!m_steps.empty()) {
        const TestReply::Step step = std::move(m_steps.front());
        m_steps.pop_front();
        if (!std::visit([this](const auto &what) { return take(what); }, step))
            return;
    }
    takeRequest();
}

bool TestServer::Connection::take(const QByteArray &bytes)
{
    m_socket.write(bytes);
    return true;
}

bool TestServer::Connection::take(TestReply::Wait)
{
    // An empty step keeps the connection busy while it waits behind the last one.
    m_steps.push_front(QByteArray());
    return m_listener.mayGoOn(this);
}

bool TestServer::Connection::take(TestReply::Close)
{
    m_socket.disconnectFromHost();
    return false;
}

bool TestServer::Connection::take(TestReply::Reset)
{
    while (m_socket.bytesToWrite() > 0 || m_socket.encryptedBytesToWrite() > 0) {
        if (!m_socket.waitForBytesWritten())
            break;
    }
    const linger noLinger{1, 0};
    setsockopt(int(m_socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &noLinger, sizeof noLinger);
    m_socket.abort();
    return false;
}

TestServer::Listener::Listener(std::shared_ptr<State> state, const Certificates::Identity &identity,
                               Scheme scheme)
    : m_state(std::move(state)), m_scheme(scheme)
{
    QFile keyFile(identity.keyFile);
    if (!keyFile.open(QIODevice::ReadOnly))
        qFatal("no key in %s", qPrintable(identity.keyFile));
    m_sslConfiguration.setPrivateKey(QSslKey(&keyFile, QSsl::Ec));
    m_sslConfiguration.setLocalCertificateChain(
        QSslCertificate::fromPath(identity.certificateFile));
    if (m_sslConfiguration.privateKey().isNull() ||
        m_sslConfiguration.localCertificateChain().isEmpty())
        qFatal("no identity in %s", qPrintable(identity.certificateFile));
    if (!listen(QHostAddress::LocalHost))
        qFatal("cannot listen: %s", qPrintable(errorString()));
}

TestServer::Listener::~Listener()
{
    // Connections tell their listener when they go, and so must go first.
    for (QObject *connection : QObjectList(children())) {
        if (dynamic_cast<Connection *>(connection))
            delete connection;
    }
}

void TestServer::Listener::incomingConnection(qintptr descriptor)
{
    new Connection(*this, descriptor, m_scheme == Scheme::Https ? &m_sslConfiguration : nullptr);
}

void TestServer::Listener::customEvent(QEvent *)
{
    std::deque<std::function<void()>> commands;
    {
        const std::lock_guard lock(m_state->mutex);
        commands.swap(m_state->commands);
    }
    for (const auto &command : commands)
        command();
}

void TestServer::Listener::release(int steps)
{
    m_releases += steps;
    while (m_releases > 0 && !m_waiting.empty()) {
        Connection *const connection = m_waiting.front();
        m_waiting.pop_front();
        --m_releases;
        connection->goOn();
    }
    publishWaitingCount();
}

bool TestServer::Listener::mayGoOn(Connection *connection)
{
    if (m_releases > 0) {
        --m_releases;
        return true;
    }
    m_waiting.push_back(connection);
    publishWaitingCount();
    return false;
}

void TestServer::Listener::forget(Connection *connection)
{
    std::erase(m_waiting, connection);
    publishWaitingCount();
}

void TestServer::Listener::publishWaitingCount()
{
    const std::lock_guard lock(m_state->mutex);
    m_state->waitingCount = int(m_waiting.size());
}

// The encrypted bytes that a TLS socket says it has written may still wait in its own buffer.
qint64 TestServer::Listener::sentByteCount() const
{
    qint64 count = m_writtenByteCount;
    if (m_scheme == Scheme::Http)
        return count;
    for (const QObject *child : children()) {
        if (const auto *connection = dynamic_cast<const Connection *>(child))
            count -= connection->unsentByteCount();
    }
    return count;
}

TestServer::TestServer(const Certificates::Identity &identity, Scheme scheme)
    : m_scheme(scheme),
      m_state(std::make_shared<State>()),
      m_listener(new Listener(m_state, identity, scheme))
{
    m_port = m_listener->serverPort();
    m_listener->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_listener, &QObject::deleteLater);
    m_thread.setObjectName(QStringLiteral("test server"));
    m_thread.start();
}

TestServer::~TestServer()
{
    m_thread.quit();
    m_thread.wait();
}

void TestServer::route(const QByteArray &path, const TestReply &reply)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->routes.insert(path, reply);
}

void TestServer::setHandler(Handler handler)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->handler = std::move(handler);
}

void TestServer::run(std::function<void()> command) const
{
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->commands.push_back(std::move(command));
    }
    QCoreApplication::postEvent(m_listener, new QEvent(QEvent::User));
}

void TestServer::release(int steps)
{
    run([this, steps] { m_listener->release(steps); });
}

bool TestServer::waitForWaiting(int replies, std::chrono::milliseconds limit) const
{
    const auto isReached = [this, replies] {
        const std::lock_guard lock(m_state->mutex);
        return m_state->waitingCount >= replies;
    };
    return QTest::qWaitFor(isReached, int(limit.count()));
}

bool TestServer::waitForRequests(int requests, std::chrono::milliseconds limit) const
{
    const auto isReached = [this, requests] {
        const std::lock_guard lock(m_state->mutex);
        return m_state->requests.size() >= size_t(requests);
    };
    return QTest::qWaitFor(isReached, int(limit.count()));
}

QUrl TestServer::url(const QByteArray &path) const
{
    const auto scheme = m_scheme == Scheme::Https ? QByteArray("https") : QByteArray("http");
    return QUrl::fromEncoded(scheme + "://localhost:" + QByteArray::number(m_port) + path);
}

QList<TestRequest> TestServer::requests() const
{
    const std::lock_guard lock(m_state->mutex);
    return {m_state->requests.begin(), m_state->requests.end()};
}

int TestServer::requestCount(const QByteArray &path) const
{
    const QList<TestRequest> all = requests();
    return int(std::count_if(all.cbegin(), all.cend(), [&path](const TestRequest &request) {
        return request.target.split('?').first() == path;
    }));
}

QByteArray TestServer::receivedBytes() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->receivedBytes;
}

qint64 TestServer::sentByteCount() const
{
    std::promise<qint64> count;
    run([this, &count] { count.set_value(m_listener->sentByteCount()); });
    return count.get_future().get();
}
