// qcop: message channels from the command line, for scripts and for trying things out.

#include "platform/qcopchannel.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <string_view>
#include <sys/signalfd.h>

namespace
{

constexpr int Success = 0;
constexpr int Failure = 1;
constexpr int WrongUsage = 2;
// How long another process may take from its reservation to its listening.
constexpr int StartTimeoutMs = 5000;

int usage()
{
    std::fputs("usage: qcop send CHANNEL MESSAGE\n"
               "       qcop listen CHANNEL\n"
               "       qcop registered CHANNEL\n",
               stderr);
    return WrongUsage;
}

/// Descriptor that becomes readable when the process is asked to end; -1 on failure.
int endRequests()
{
    sigset_t signalSet;
    sigemptyset(&signalSet);
    sigaddset(&signalSet, SIGTERM);
    sigaddset(&signalSet, SIGINT);
    if (sigprocmask(SIG_BLOCK, &signalSet, nullptr) != 0)
        return -1;
    return signalfd(-1, &signalSet, SFD_CLOEXEC | SFD_NONBLOCK);
}

/// Prints the message on one line. Ends the program when nobody can read it any more.
void print(QByteArray message)
{
    message.replace('\r', "\\r").replace('\n', "\\n").append('\n');
    const auto size = static_cast<size_t>(message.size());
    if (std::fwrite(message.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
        QCoreApplication::exit(Failure);
}

int listen(const QByteArray& name, int argc, char** argv)
{
    // A reader that has gone is an error of print(); it must not leave the socket behind.
    std::signal(SIGPIPE, SIG_IGN);
    // Texts are handed on as bytes. The toolkit warns about other locales at every start.
    qputenv("LC_ALL", "C.UTF-8");
    const int requests = endRequests();
    const QCoreApplication application(argc, argv);
    QSocketNotifier ending(requests, QSocketNotifier::Read);
    QObject::connect(&ending, &QSocketNotifier::activated, &application,
                     [] { QCoreApplication::exit(Success); });

    if (!QCopChannel::reserve(name, StartTimeoutMs)) {
        std::fprintf(stderr, "qcop: cannot listen on %s: %s\n", name.constData(),
                     QCopChannel::isRegistered(name) ? "it is registered already"
                                                     : "it cannot be registered");
        return Failure;
    }
    const QCopChannel channel(name);
    if (!channel.isOwner())
        return Failure;
    QObject::connect(&channel, &QCopChannel::received, &application, &print);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "send" && argc == 4)
        return QCopChannel::send(argv[2], argv[3]) ? Success : Failure;
    if (command == "listen" && argc == 3)
        return listen(argv[2], argc, argv);
    if (command == "registered" && argc == 3)
        return QCopChannel::isRegistered(argv[2]) ? Success : Failure;
    return usage();
}
