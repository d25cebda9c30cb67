#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// The receiving end of a channel: a local socket that takes one message from each connection. What
/// is on the wire and which limits hold says QCopChannel.
class QCopServer : public QObject
{
    Q_OBJECT

public:
    explicit QCopServer(QObject* parent = nullptr);
    /// Stops listening and removes the socket. Messages that were not received yet are lost.
    ~QCopServer() override;

    /// Listens at `path`, in the place of a socket that was left behind there. The socket appears
    /// only once it listens and nobody else may use it. False, with the reason in errno, when that
    /// failed. Call it once.
    bool listen(const QByteArray& path);
    bool isListening() const { return acceptor_ != nullptr; }

    /// What a sender writes.
    static QByteArray toWire(const QByteArray& message, const QByteArray& data);

signals:
    /// A message has arrived. Emitted from the event loop; a slot may destroy the server.
    void received(const QByteArray& message, const QByteArray& data);

private:
    class Connection;

    void accept();
    void serve(int socket);
    void read(Connection* connection);
    void drop(Connection* connection);

    QByteArray path_;
    int socket_ = -1;
    std::unique_ptr<QSocketNotifier> acceptor_;
    QList<Connection*> served_; ///< children of this object
};
