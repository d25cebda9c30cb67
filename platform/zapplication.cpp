#include "platform/zapplication.h"

#include "platform/screenscale.h"
#include "platform/zaccessible.h"
#include "platform/zscreen.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QScopeGuard>
#include <QSessionManager>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <vector>

namespace
{

bool quitting = false;
int waits = 0;

/// The toolkit keeps references to these for its whole life.
struct Arguments {
    int count = 0;
    std::vector<QByteArray> texts;
    std::vector<char*> pointers;
};

Arguments& arguments()
{
    static Arguments kept;
    return kept;
}

QList<ZApplication*>& facades()
{
    static QList<ZApplication*> alive;
    return alive;
}

void keepArguments(int argc, char** argv)
{
    Arguments& kept = arguments();
    kept = Arguments();
    for (int i = 0; i < argc; ++i)
        kept.texts.emplace_back(argv[i]);
    for (QByteArray& text : kept.texts)
        kept.pointers.push_back(text.data());
    kept.count = int(kept.pointers.size());
    kept.pointers.push_back(nullptr);
}

/// Leaves an environment variable as it was.
class KeptVariable
{
public:
    explicit KeptVariable(const char* name)
        : name_(name), wasSet_(qEnvironmentVariableIsSet(name)), value_(qgetenv(name))
    {
    }
    ~KeptVariable()
    {
        if (wasSet_)
            qputenv(name_, value_);
        else
            qunsetenv(name_);
    }
    KeptVariable(const KeptVariable&) = delete;
    KeptVariable& operator=(const KeptVariable&) = delete;

private:
    const char* name_;
    bool wasSet_;
    QByteArray value_;
};

/// File names and debug texts are UTF-8. Without this the toolkit would switch over by itself, with
/// a warning on stderr at every start.
void useUtf8Locale()
{
    setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0)
        return;
    qputenv(qEnvironmentVariableIsEmpty("LC_ALL") ? "LC_CTYPE" : "LC_ALL", "C.UTF-8");
    // Fails as a whole when the environment names a locale that is not installed.
    if (setlocale(LC_ALL, "") == nullptr)
        setlocale(LC_CTYPE, "C.UTF-8");
}

/// Through memory that it shares with the X server the toolkit paints no place a second time before
/// the server has answered that it has shown the first. Work that shows each of its steps would
/// spend its time waiting; what is painted here is small enough to be sent.
void sendPicturesAtOnce()
{
    if (!qEnvironmentVariableIsSet("QT_XCB_NO_MITSHM"))
        qputenv("QT_XCB_NO_MITSHM", "1");
}

/// Calls `slot` on every facade that is alive, also if a slot makes or destroys some.
void callAll(void (ZApplication::*slot)())
{
    QList<QPointer<ZApplication>> now;
    for (ZApplication* facade : std::as_const(facades()))
        now.append(facade);
    for (const QPointer<ZApplication>& facade : std::as_const(now)) {
        if (facade)
            (facade.data()->*slot)();
    }
}

class ToolkitApplication : public QApplication
{
public:
    using QApplication::QApplication;

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::Quit || quitting)
            return QApplication::event(event);
        callAll(&ZApplication::slotQuickQuit);
        event->ignore();
        return true;
    }
};

} // namespace

ZApplication::ZApplication(const int& argc, char** argv, [[maybe_unused]] int type)
{
    facades().append(this);
    if (qApp != nullptr)
        return;
    ownsToolkit_ = true;
    quitting = false;
    useUtf8Locale();
    // What only this process is told is not for the programs that it starts.
    const KeptVariable scaling("QT_ENABLE_HIGHDPI_SCALING");
    const KeptVariable factor("QT_SCALE_FACTOR");
    const KeptVariable shared("QT_XCB_NO_MITSHM");
    sendPicturesAtOnce();
    keepArguments(argc, argv);
    ScreenScale::prepare(arguments().count, arguments().pointers.data());
    auto* toolkit = new ToolkitApplication(arguments().count, arguments().pointers.data());
    // A hidden program goes on running.
    QApplication::setQuitOnLastWindowClosed(false);
    ZAccessible::install();
    connect(toolkit, &QGuiApplication::commitDataRequest, toolkit,
            [] { callAll(&ZApplication::slotShutdown); });
}

ZApplication::~ZApplication()
{
    facades().removeOne(this);
    if (ownsToolkit_) {
        ZScreen::destroyInstance();
        delete qApp;
    }
}

QByteArray ZApplication::programName()
{
    return arguments().texts.empty() ? QByteArray() : arguments().texts.front();
}

int ZApplication::exec()
{
    return quitting ? 0 : QApplication::exec();
}

void ZApplication::setMainWidget(QWidget* widget)
{
    mainWidget_ = widget;
}

void ZApplication::quit()
{
    quitting = true;
    QCoreApplication::exit(0);
}

bool ZApplication::isQuitting()
{
    return quitting;
}

void ZApplication::processEvents()
{
    QCoreApplication::processEvents();
}

void ZApplication::processEventsButInput()
{
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

bool ZApplication::waitUntil(const std::function<bool()>& done)
{
    const int depth = ++waits;
    // A plain dispatcher sends what was posted and sleeps in the same turn; what ends the wait may
    // have been among that. Only the innermost wait is asked, since no other can go on.
    QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    const auto asked = QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock,
                                        dispatcher, [&done, depth, dispatcher] {
                                            if (depth == waits && (quitting || done()))
                                                dispatcher->interrupt();
                                        });
    const auto atEnd = qScopeGuard([&asked] {
        --waits;
        QObject::disconnect(asked);
    });
    while (!done()) {
        if (quitting)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

int ZApplication::waitDepth()
{
    return waits;
}

void ZApplication::slotRaise()
{
    emit signalRaise();
    if (mainWidget_ != nullptr)
        mainWidget_->show();
    ZScreen::instance()->raiseWindow();
}

void ZApplication::slotShutdown() {}

void ZApplication::slotQuickQuit() {}
