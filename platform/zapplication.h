#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>

#include <functional>

class QWidget;

/// The application object of the framework: a facade over the toolkit's one application.
///
/// Several may live at once. The first one made creates the toolkit's application and destroys it
/// with itself; later ones share it and must not outlive it. Every object emits and answers on its
/// own: a request of the system reaches the virtual slots of each, in the order they were made.
class ZApplication : public QObject
{
    Q_OBJECT

public:
    /// The application types of the toolkit of old; only GuiClient has a meaning here.
    enum Type { Tty = 0, GuiClient = 1, GuiServer = 2 };

    /// `argc` and `argv` are copied. Sets a UTF-8 locale if the environment gives none.
    ZApplication(const int& argc, char** argv, int type);
    ~ZApplication() override;

    /// The program's argv[0] as it was given; empty when there was none.
    static QByteArray programName();

    /// Runs the event loop until quit(); returns the exit status. Returns 0 at once when quit() was
    /// called before.
    int exec();
    /// The widget that slotRaise() brings to the front. Not owned; it may go first.
    void setMainWidget(QWidget* widget);

    /// Ends the event loop and every nested one: a waitUntil() in progress returns false.
    static void quit();
    static bool isQuitting();
    /// Handles what is pending and returns.
    static void processEvents();
    /// Handles what is pending except keys, mouse and touch, which stay for the event loop.
    static void processEventsButInput();
    /// Handles events, sleeping while there are none, until `done` says so (returns true) or the
    /// application is asked to quit (returns false).
    static bool waitUntil(const std::function<bool()>& done);
    /// How many waitUntil() are in progress, one within another.
    static int waitDepth();

signals:
    /// The program is asked to come to the front.
    void signalRaise();

public slots:
    /// Brings the program to the front: emits signalRaise(), then shows and raises the main widget.
    void slotRaise();
    /// The session manager is about to shut the session down.
    virtual void slotShutdown();
    /// The toolkit was asked to quit by something other than quit(). Not called by quit().
    virtual void slotQuickQuit();

private:
    QPointer<QWidget> mainWidget_;
    bool ownsToolkit_ = false;
};
