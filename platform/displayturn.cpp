#include "platform/displayturn.h"

#include "platform/qcopchannel.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <sys/syscall.h>
#include <unistd.h>

namespace
{

constexpr char Channel[] = "QuarnDisplay";
const QByteArray Taken = QByteArrayLiteral("taken ");
const QByteArray Given = QByteArrayLiteral("given ");

bool isWanted = false;

QByteArray ownNumber()
{
    return QByteArray::number(QCoreApplication::applicationPid());
}

} // namespace

/// A process that has the display; tells of its end.
class DisplayTurn::Guest
{
public:
    explicit Guest(qint64 process) : end_(int(::syscall(SYS_pidfd_open, pid_t(process), 0))) {}
    ~Guest()
    {
        notifier_.reset();
        if (isRunning())
            ::close(end_);
    }
    Guest(const Guest&) = delete;
    Guest& operator=(const Guest&) = delete;

    bool isRunning() const { return end_ >= 0; }
    template<typename Function>
    void whenEnded(const QObject* context, Function function)
    {
        notifier_ = std::make_unique<QSocketNotifier>(end_, QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, context, function);
    }
    void stopWatching() { notifier_->setEnabled(false); }

private:
    int end_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

DisplayTurn::DisplayTurn(QObject* parent) : QObject(parent) {}

DisplayTurn::~DisplayTurn() = default;

bool DisplayTurn::isNeeded()
{
    return isWanted || QGuiApplication::platformName() == QLatin1String("linuxfb");
}

void DisplayTurn::setNeeded(bool needed)
{
    isWanted = needed;
}

void DisplayTurn::show()
{
    if (channel_)
        return;
    isGuest_ =
        QCopChannel::isRegistered(Channel) && QCopChannel::send(Channel, Taken + ownNumber());
    if (isGuest_)
        return;
    channel_ = std::make_unique<QCopChannel>(Channel);
    connect(channel_.get(), &QCopChannel::received, this, &DisplayTurn::take);
}

void DisplayTurn::hide()
{
    if (isGuest_)
        QCopChannel::send(Channel, Given + ownNumber());
}

void DisplayTurn::take(const QByteArray& message)
{
    bool isNumber = false;
    const qint64 process = message.mid(Taken.size()).toLongLong(&isNumber);
    if (!isNumber || process <= 0)
        return;
    if (message.startsWith(Taken))
        lend(process);
    else if (message.startsWith(Given))
        takeBack(process);
}

void DisplayTurn::lend(qint64 process)
{
    auto guest = std::make_shared<Guest>(process);
    if (!guest->isRunning()) {
        // It was there while we could not listen, and has left what it drew.
        emit changed();
        return;
    }
    // The key that ended it may be still to come, and is not for us.
    guest->whenEnded(this, [this, process] {
        guests_.value(process)->stopWatching();
        QTimer::singleShot(0, this, [this, process] { takeBack(process); });
    });
    const bool wasOurs = isOurs();
    guests_.insert(process, guest);
    if (wasOurs)
        emit changed();
}

void DisplayTurn::takeBack(qint64 process)
{
    if (guests_.remove(process) > 0 && isOurs())
        emit changed();
}
