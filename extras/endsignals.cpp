#include "extras/endsignals.h"

#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace
{

std::atomic<int> writeEnd{-1};

void tellSignal(int signal)
{
    const int error = errno;
    const auto number = static_cast<unsigned char>(signal);
    // One more than fit tells nothing new.
    static_cast<void>(!write(writeEnd, &number, sizeof number));
    errno = error;
}

} // namespace

EndSignals::EndSignals()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    read_.reset(ends[0]);
    write_.reset(ends[1]);
    writeEnd = write_.get();
    auto* notifier = new QSocketNotifier(read_.get(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        if (const int signal = next())
            emit received(signal);
    });
    struct sigaction telling = {};
    telling.sa_handler = tellSignal;
    telling.sa_flags = SA_RESTART;
    constexpr std::array<int, 3> Signals{SIGTERM, SIGHUP, SIGINT};
    for (size_t i = 0; i < Signals.size(); ++i) {
        Former& former = former_.at(i);
        former.signal = Signals.at(i);
        former.isTaken = sigaction(former.signal, nullptr, &former.action) == 0 &&
                         former.action.sa_handler != SIG_IGN &&
                         sigaction(former.signal, &telling, nullptr) == 0;
    }
}

EndSignals::~EndSignals()
{
    giveBack();
    if (const int signal = next())
        raise(signal);
}

/// The next one that came; 0 if there is none.
int EndSignals::next()
{
    unsigned char number = 0;
    return read_.isOpen() && read(read_.get(), &number, sizeof number) == 1 ? number : 0;
}

void EndSignals::giveBack()
{
    for (Former& former : former_) {
        if (former.isTaken)
            sigaction(former.signal, &former.action, nullptr);
        former.isTaken = false;
    }
    writeEnd = -1;
}

void EndSignals::obey(int signal)
{
    giveBack();
    raise(signal);
}
