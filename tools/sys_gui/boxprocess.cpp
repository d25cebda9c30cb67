#include "tools/sys_gui/boxprocess.h"

#include "files/names.h"
#include "files/programnames.h"
#include "platform/regularfile.h"
#include "platform/screenscale.h"
#include "platform/zapplication.h"
#include "platform/zscreen.h"
#include "tools/sys_gui/box.h"

#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <optional>

namespace
{

constexpr const char* FrameBuffer = "/dev/fb0";
constexpr int FailureMilliseconds = 10000;
// A box that does not close by then is one whose display hangs.
constexpr int StuckMilliseconds = 15000;
constexpr int EndMilliseconds = 2000;
constexpr size_t MaxLineBytes = 8192;
constexpr char ProgressLine = 'p';
constexpr char FailureLine = 'f';

/// The next line of the move; empty at the end, nothing when there is none yet.
std::optional<QByteArray> receive(int channel)
{
    std::array<char, MaxLineBytes> line;
    const ssize_t size = recv(channel, line.data(), line.size(), MSG_DONTWAIT);
    if (size > 0)
        return QByteArray(line.data(), size);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return std::nullopt;
    return QByteArray();
}

void showLine(MoveBox& box, const QByteArray& line)
{
    if (line.startsWith(FailureLine)) {
        box.showFailure(decodeName(line.mid(1)));
        QTimer::singleShot(FailureMilliseconds, &box, &ZApplication::quit);
        return;
    }
    const QList<QByteArray> numbers = line.mid(1).split(' ');
    box.showProgress({numbers.value(0).toLongLong(), numbers.value(1).toLongLong()});
}

/// What the process of the box does, until the move or its user closes the box.
void runBox(const BoxTexts& texts, char** argv, int channel)
{
    QCoreApplication::setApplicationName(QStringLiteral("quarn"));
    QGuiApplication::setApplicationDisplayName(ProgramNames::Program);
    QGuiApplication::setDesktopFileName(QStringLiteral("quarn"));
    ScreenScale::setVariable("QUARN_SCALE");
    ZApplication application(1, argv, ZApplication::GuiClient);
    setPathEncoder(encodedPath);
    MoveBox::addFont(decodeName(texts.icon));
    MoveBox box(decodeName(texts.title), decodeName(texts.text), decodeName(texts.icon));
    QObject::connect(&box, &MoveBox::closed, &application, &ZApplication::quit);
    QSocketNotifier notifier(channel, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &box, [&] {
        while (const auto line = receive(channel)) {
            if (line->isEmpty()) {
                notifier.setEnabled(false);
                ZApplication::quit();
                return;
            }
            showLine(box, *line);
        }
    });
    box.show();
    application.exec();
}

bool isSet(const char* variable)
{
    return !qEnvironmentVariableIsEmpty(variable);
}

} // namespace

BoxProcess::BoxProcess(const BoxTexts& texts, char** argv) : texts_(texts), argv_(argv) {}

BoxProcess::~BoxProcess()
{
    if (!isStarted())
        return;
    shutdown(channel_.get(), SHUT_WR);
    pollfd end{channel_.get(), POLLIN, 0};
    if (poll(&end, 1, EndMilliseconds) <= 0)
        kill(process_, SIGKILL);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool BoxProcess::canShow()
{
    if (isSet("QT_QPA_PLATFORM")) {
        const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
        return !platform.startsWith("offscreen") && !platform.startsWith("minimal");
    }
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || access(FrameBuffer, W_OK) == 0;
}

void BoxProcess::start()
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return;
    channel_.reset(ends[0]);
    FileHandle far(ends[1]);
    process_ = fork();
    if (process_ != 0)
        return;
    // The move decides when both end; its files must not stay open here.
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        std::signal(number, SIG_IGN);
    // The toolkit aborts where it cannot open the display, which is nothing to look into.
    prctl(PR_SET_DUMPABLE, 0);
    constexpr int Channel = STDERR_FILENO + 1;
    if (dup2(far.get(), Channel) < 0)
        _exit(EXIT_FAILURE);
    close_range(Channel + 1, ~0U, 0);
    if (!isSet("QT_QPA_PLATFORM") && !isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "linuxfb");
    runBox(texts_, argv_, Channel);
    _exit(EXIT_SUCCESS);
}

void BoxProcess::send(const QByteArray& line)
{
    // A box that does not keep up misses lines rather than delay the move.
    if (isStarted())
        ::send(channel_.get(), line.constData(), size_t(line.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
}

void BoxProcess::showProgress(const MoveProgress& progress)
{
    send(ProgressLine + QByteArray::number(progress.bytesDone) + ' ' +
         QByteArray::number(progress.bytesTotal));
}

void BoxProcess::showFailure(const QByteArray& message)
{
    send(FailureLine + message.left(MaxLineBytes - 1));
}

void BoxProcess::waitUntilClosed()
{
    pollfd end{channel_.get(), POLLIN, 0};
    if (isStarted())
        poll(&end, 1, StuckMilliseconds);
}
