#include "platform/zapplication.h"
#include "platform/zscreen.h"
#include "tests/platform/selfrun.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScopeGuard>
#include <QSessionManager>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <ctime>
#include <langinfo.h>
#include <memory>

namespace
{

char programText[] = "folder/program";
char* argumentTexts[] = {programText, nullptr};

/// Writes down what the system asks of it.
class Recorder : public ZApplication
{
public:
    Recorder(QString name, QStringList& log)
        : ZApplication(1, argumentTexts, GuiClient), name_(std::move(name)), log_(log)
    {
    }

    void slotShutdown() override { log_.append(name_ + " shutdown"); }
    void slotQuickQuit() override
    {
        log_.append(name_ + " quit");
        whenAsked();
    }

    std::function<void()> whenAsked = [] {};

private:
    QString name_;
    QStringList& log_;
};

class Main : public QWidget
{
public:
    Main() : QWidget(ZScreen::instance())
    {
        hide();
        ZScreen::instance()->place(this, ZScreen::Layer::Main);
    }
};

void askToQuit()
{
    QEvent quit(QEvent::Quit);
    QApplication::sendEvent(qApp, &quit);
}

} // namespace

/// Every test makes the application objects it needs: the toolkit comes and goes with them.
class tst_ZApplication : public QObject
{
    Q_OBJECT

private slots:
    void objectsShareTheToolkit()
    {
        QCOMPARE(qApp, nullptr);
        {
            QStringList log;
            const Recorder first("first", log);
            const QObject* toolkit = qApp;
            QVERIFY(toolkit != nullptr);
            {
                const Recorder second("second", log);
                QCOMPARE(qApp, toolkit);
            }
            QCOMPARE(qApp, toolkit);
        }
        QCOMPARE(qApp, nullptr);
    }

    void newToolkitStartsAnew()
    {
        QStringList log;
        {
            const Recorder first("first", log);
            ZApplication::quit();
            QVERIFY(ZApplication::isQuitting());
        }
        Recorder second("second", log);
        QVERIFY(!ZApplication::isQuitting());
        QTimer::singleShot(0, &second, &ZApplication::quit);
        QCOMPARE(second.exec(), 0);
    }

    void programNameIsTheFirstArgument()
    {
        QStringList log;
        {
            const Recorder application("any", log);
            QCOMPARE(ZApplication::programName(), "folder/program");
        }
        char* none[] = {nullptr};
        const ZApplication nameless(0, none, ZApplication::GuiClient);
        QVERIFY(ZApplication::programName().isEmpty());
    }

    void argumentsAreCopied()
    {
        char text[] = "before";
        char* arguments[] = {text, nullptr};
        const ZApplication application(1, arguments, ZApplication::GuiClient);
        text[0] = 'X';
        QCOMPARE(ZApplication::programName(), "before");
    }

    void everyObjectRaisesOnItsOwn()
    {
        QStringList log;
        Recorder first("first", log);
        Recorder second("second", log);
        QSignalSpy firstRaised(&first, &ZApplication::signalRaise);
        QSignalSpy secondRaised(&second, &ZApplication::signalRaise);
        second.slotRaise();
        QCOMPARE(firstRaised.count(), 0);
        QCOMPARE(secondRaised.count(), 1);
        first.slotRaise();
        QCOMPARE(firstRaised.count(), 1);
        QCOMPARE(secondRaised.count(), 1);
    }

    void raisingShowsTheMainWidget()
    {
        QStringList log;
        Recorder application("any", log);
        Main main;
        application.setMainWidget(&main);
        QVERIFY(!main.isVisible());
        application.slotRaise();
        QVERIFY(main.isVisible());
        QVERIFY(ZScreen::instance()->window()->isVisible());
    }

    void raisingAfterTheMainWidgetIsGoneDoesNothing()
    {
        QStringList log;
        Recorder application("any", log);
        auto main = std::make_unique<Main>();
        application.setMainWidget(main.get());
        main.reset();
        application.slotRaise();
        QVERIFY(!ZScreen::instance()->window()->isVisible());
    }

    void quitRequestReachesEveryObjectInOrder()
    {
        QStringList log;
        const Recorder first("first", log);
        const Recorder second("second", log);
        askToQuit();
        QCOMPARE(log, QStringList({"first quit", "second quit"}));
        QVERIFY(!ZApplication::isQuitting());
    }

    void quitRequestSkipsAnObjectThatIsGone()
    {
        QStringList log;
        Recorder first("first", log);
        auto second = std::make_unique<Recorder>("second", log);
        first.whenAsked = [&second] { second.reset(); };
        askToQuit();
        QCOMPARE(log, QStringList("first quit"));
    }

    void quitRequestDoesNotEndTheLoop()
    {
        QStringList log;
        Recorder first("first", log);
        const Recorder second("second", log);
        bool wentOn = false;
        QTimer::singleShot(0, &first, [&] {
            QCoreApplication::quit();
            askToQuit();
            QTimer::singleShot(0, &first, [&wentOn] {
                wentOn = true;
                ZApplication::quit();
            });
        });
        QCOMPARE(first.exec(), 0);
        QVERIFY(wentOn);
        QCOMPARE(log, QStringList({"first quit", "second quit", "first quit", "second quit"}));
    }

    void ownQuitAsksNobody()
    {
        QStringList log;
        Recorder application("any", log);
        QTimer::singleShot(0, &application, &ZApplication::quit);
        QCOMPARE(application.exec(), 0);
        QVERIFY(log.isEmpty());
        QVERIFY(ZApplication::isQuitting());
    }

    void endOfSessionReachesEveryObject()
    {
        QStringList log;
        const Recorder first("first", log);
        const Recorder second("second", log);
        // A session manager cannot be made; whoever listens must not need one.
        QVERIFY(QMetaObject::invokeMethod(qApp, "commitDataRequest", Qt::DirectConnection,
                                          QGenericArgument("QSessionManager&", qApp)));
        QCOMPARE(log, QStringList({"first shutdown", "second shutdown"}));
        QVERIFY(!ZApplication::isQuitting());
    }

    void quitEndsNestedWaits()
    {
        QStringList log;
        Recorder application("any", log);
        QList<bool> answers;
        const auto never = [] { return false; };
        QTimer::singleShot(0, &application, [&] {
            QTimer::singleShot(0, &application, [&] {
                QTimer::singleShot(0, &application, &ZApplication::quit);
                answers.append(ZApplication::waitUntil(never));
            });
            answers.append(ZApplication::waitUntil(never));
        });
        QCOMPARE(application.exec(), 0);
        QCOMPARE(answers, QList<bool>({false, false}));
    }

    void execAfterQuitReturnsAtOnce()
    {
        QStringList log;
        Recorder application("any", log);
        QTimer::singleShot(0, &application, &ZApplication::quit);
        QVERIFY(!ZApplication::waitUntil([] { return false; }));
        QCOMPARE(application.exec(), 0);
    }

    void waitingForWhatIsDoneHandlesNothing()
    {
        QStringList log;
        Recorder application("any", log);
        bool handled = false;
        QMetaObject::invokeMethod(
            &application, [&handled] { handled = true; }, Qt::QueuedConnection);
        QVERIFY(ZApplication::waitUntil([] { return true; }));
        QVERIFY(!handled);
        ZApplication::processEvents();
        QVERIFY(handled);
    }

    void waitingSleeps()
    {
        QStringList log;
        Recorder application("any", log);
        ZApplication::processEvents();
        bool done = false;
        int asked = 0;
        QTimer::singleShot(400, &application, [&done] { done = true; });
        QElapsedTimer timer;
        timer.start();
        const clock_t before = std::clock();
        QVERIFY(ZApplication::waitUntil([&] {
            ++asked;
            return done;
        }));
        const double used = double(std::clock() - before) / CLOCKS_PER_SEC;
        const double passed = double(timer.elapsed()) / 1000;
        QVERIFY2(used < passed / 4, qPrintable(QString("%1 of %2 s").arg(used).arg(passed)));
        QVERIFY2(asked < 50, qPrintable(QString::number(asked)));
    }

    void waitingIsEndedByAnotherThread()
    {
        QStringList log;
        Recorder application("any", log);
        bool done = false;
        const std::unique_ptr<QThread> thread(QThread::create(
            [&] { QMetaObject::invokeMethod(&application, [&done] { done = true; }); }));
        thread->start();
        QVERIFY(ZApplication::waitUntil([&done] { return done; }));
        QVERIFY(thread->wait());
    }

    void waitingIsEndedByWhatWasPosted_data()
    {
        QTest::addColumn<QByteArray>("withoutGLib");
        QTest::newRow("default") << QByteArray();
        QTest::newRow("plain dispatcher") << QByteArray("1");
    }

    /// Nothing but the messages themselves wakes the waits; the last one is ended by the end of the
    /// program.
    void waitingIsEndedByWhatWasPosted()
    {
        QFETCH(QByteArray, withoutGLib);
        const auto restore =
            qScopeGuard([was = qgetenv("QT_NO_GLIB")] { qputenv("QT_NO_GLIB", was); });
        qputenv("QT_NO_GLIB", withoutGLib);
        QStringList log;
        Recorder application("any", log);
        bool isLate = false;
        QTimer::singleShot(20000, &application, [&isLate] { isLate = true; });
        const auto post = [&application](auto&& message) {
            QMetaObject::invokeMethod(&application, message, Qt::QueuedConnection);
        };
        bool inner = false;
        bool outer = false;
        post([&] {
            post([&inner] { inner = true; });
            QVERIFY(ZApplication::waitUntil([&inner] { return inner; }));
            outer = true;
        });
        QVERIFY(ZApplication::waitUntil([&outer] { return outer; }));
        QVERIFY(!isLate);
        post(&ZApplication::quit);
        QVERIFY(!ZApplication::waitUntil([] { return false; }));
        QVERIFY(!isLate);
    }

    void hiddenProgramGoesOn()
    {
        QStringList log;
        Recorder application("any", log);
        Main main;
        main.show();
        bool wentOn = false;
        QTimer::singleShot(0, &main, [&] {
            main.hide();
            ZScreen::instance()->window()->close();
            QTimer::singleShot(0, &main, [&wentOn] {
                wentOn = true;
                ZApplication::quit();
            });
        });
        QCOMPARE(application.exec(), 0);
        QVERIFY(wentOn);
    }

    void textsAreUtf8InAnyEnvironment_data()
    {
        QTest::addColumn<QString>("all");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("lang");
        const QString unset;
        QTest::newRow("nothing set") << unset << unset << unset;
        QTest::newRow("C for all") << "C" << unset << "C.UTF-8";
        QTest::newRow("POSIX") << unset << unset << "POSIX";
        QTest::newRow("C for characters") << unset << "C"
                                          << "C.UTF-8";
        QTest::newRow("unknown") << unset << unset << "xx_YY.UTF-8";
        QTest::newRow("unknown for all") << "xx_YY.UTF-8" << unset << "C.UTF-8";
        QTest::newRow("unknown for characters") << unset << "xx_YY" << unset;
        QTest::newRow("UTF-8") << unset << unset << "C.UTF-8";
    }

    void textsAreUtf8InAnyEnvironment()
    {
        QFETCH(QString, all);
        QFETCH(QString, type);
        QFETCH(QString, lang);
        const SelfRun run = SelfRun::with({"--print-encoding"},
                                          {{"LC_ALL", all}, {"LC_CTYPE", type}, {"LANG", lang}});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.output, "UTF-8");
        QCOMPARE(run.errors, QByteArray());
    }
};

int main(int argc, char** argv)
{
    if (argc == 2 && qstrcmp(argv[1], "--print-encoding") == 0) {
        const ZApplication application(argc, argv, ZApplication::GuiClient);
        std::fputs(nl_langinfo(CODESET), stdout);
        return 0;
    }
    const QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    tst_ZApplication test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_zapplication.moc"
