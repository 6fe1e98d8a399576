#pragma once

#include "platform/HttpConnection.h"

#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QSslConfiguration>
#include <QTimer>

#include <memory>
#include <optional>

// HttpConnection over one QNetworkReply, which in turn does its work on a thread of Qt's own: what
// happens on this object's thread is the hand-over of finished pieces.
class QtHttpConnection final : public QObject,
                               public HttpConnection,
                               public std::enable_shared_from_this<QtHttpConnection>
{
    Q_OBJECT

public:
    QtHttpConnection(const HttpRequest &request, std::shared_ptr<HttpConnectionDelegate> delegate,
                     const QSslConfiguration &sslConfiguration);

    // Left alone, they are closed only when the application object has gone, and Qt misses it.
    static void closeIdleConnectionsOfThisThread();

    void start() override;
    void setPaused(bool isPaused) override;

private:
    void send();
    void sendToAnyOf(const QList<QHostAddress> &addresses);
    [[nodiscard]] bool hasNextAddress() const;
    bool sendToNextAddress();
    void sendByQt(const QNetworkRequest &request);
    void takeConnection();
    void passOverTheName(QList<QSslError> errors);
    void takeResponse();
    void takeData();
    void takeEnd();
    [[nodiscard]] bool followRedirect();
    [[nodiscard]] std::optional<Error> failure() const;
    void giveUp(const QString &reason);
    void dropReply();
    void end();
    [[nodiscard]] bool isWholeBody() const;

    HttpRequest m_request; // what is asked now; a redirect may change it
    const QSslConfiguration m_sslConfiguration;
    std::shared_ptr<HttpConnectionDelegate> m_delegate;
    std::shared_ptr<QtHttpConnection> m_self;         // from start() to the last message
    std::shared_ptr<QNetworkAccessManager> m_manager; // of m_reply, and only while there is one
    QNetworkReply *m_reply = nullptr;                 // owned by its manager until deleteLater()
    QTimer m_idleTimer;
    int m_status = 0;
    qint64 m_expectedLength = -1;
    qint64 m_receivedLength = 0;
    int m_redirectCount = 0;
    std::optional<QString> m_refusedHost; // when it is asked at one of its addresses
    QList<QHostAddress> m_addresses;      // those not tried yet
    bool m_isSent = false;
    bool m_hasResponse = false;
    bool m_isPaused = false;
    std::optional<QString> m_whyGivenUp;
};
