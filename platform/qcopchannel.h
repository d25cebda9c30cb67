#pragma once

#include <QByteArray>
#include <QObject>

#include <memory>

/// A named channel on which the programs of one user send each other short messages.
///
/// An object registers the channel for its process and receives what is sent there; anybody may
/// send. A channel has one owner at a time. A process that ends in whatever way gives its channels
/// up; nothing it leaves behind blocks the next owner.
///
/// Channels are local sockets in "$XDG_RUNTIME_DIR/qcop", or in "qcop-<uid>" in the folder for
/// temporary files if that variable does not name an absolute, existing folder. The folder is
/// created with mode 0700; one that is a link, is not ours or is open to others is refused.
/// Channel NAME is the socket "NAME"; its owner holds a lock on "NAME.lock", which stays behind.
///
/// A name has 1 to 64 characters of A-Z, a-z, 0-9, ".", "_" and "-", does not begin with "." and
/// does not end in ".lock". The whole path must fit into a socket address (107 bytes). Whatever is
/// refused makes the call return false, with a warning on stderr.
///
/// On the wire a connection carries one message from the sender: three 32-bit numbers, big endian
/// (the magic 0x51434f50, the length of the message, the length of the data, in bytes), then the
/// message, then the data. The receiver answers nothing, closes, and ignores what follows. It
/// serves MaxConnections at a time and leaves further ones waiting; it drops one that sends
/// something else, exceeds a limit or is not complete after ReceiveTimeoutMs.
///
/// send() and isRegistered() may be called from any thread; the rest belongs to the thread of the
/// event loop. No timer runs while no connection is open.
class QCopChannel : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype MaxMessageBytes = 4096;
    static constexpr qsizetype MaxDataBytes = 65536;
    static constexpr qsizetype MaxConnections = 16;
    static constexpr int SendTimeoutMs = 1000;
    static constexpr int ReceiveTimeoutMs = 5000;

    /// Registers `channel`, with the reservation if this process has one. On failure (another
    /// owner, also one in this process; refused name or folder) warns, and isOwner() is false.
    /// Receiving needs an event loop.
    explicit QCopChannel(const QByteArray& channel, QObject* parent = nullptr);
    /// Unregisters. Messages that were not received yet are lost.
    ~QCopChannel() override;

    bool isOwner() const;

    /// Whether a process listens on `channel`, be it busy or stopped. Never blocks and is not
    /// noticed by the owner.
    static bool isRegistered(const QByteArray& channel);
    /// Hands a message over to the owner of `channel`. Returns false when there is none, a limit is
    /// exceeded, or it could not be handed over within SendTimeoutMs; it never blocks longer. True
    /// means that the system keeps the message for the owner, who may get it after this process
    /// has ended. What one process sends on a channel arrives in that order.
    static bool send(const QByteArray& channel, const QByteArray& message,
                     const QByteArray& data = {});

    /// Makes this process the owner of `channel` before it listens, so that of several programs
    /// started in the same instant one goes on. Returns true at once when nobody is the owner, or
    /// this process has the reservation already. While the owner does not listen yet, waits up to
    /// `timeoutMs` for it to listen (false) or to give up (true). Also false at the end of that
    /// time and when the name or folder is refused: isRegistered() tells the cases apart.
    static bool reserve(const QByteArray& channel, int timeoutMs);
    /// Gives up a reservation that no object has adopted; does nothing if there is none.
    static void releaseReservation(const QByteArray& channel);

signals:
    /// A message has arrived. Emitted from the event loop; a slot may destroy the channel.
    void received(const QByteArray& message, const QByteArray& data);

private:
    void listen(const QByteArray& channel);

    struct Private;
    std::unique_ptr<Private> d_;
};
