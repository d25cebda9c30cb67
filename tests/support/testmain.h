#pragma once

#include "platform/zapplication.h"
#include "platform/zscreen.h"
#include "tests/support/rootpowers.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

/// Runs a test object in an application of the framework on the toolkit's display without a screen,
/// with channels in a folder of its own. Fails if the test leaves a widget behind.
template<typename TestObject>
int runTest(int argc, char** argv)
{
    giveUpRootPowers(argv);
    if (!qEnvironmentVariableIsSet("QUARN_TEST_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    int result = 0;
    {
        TestObject object;
        result = QTest::qExec(&object, argc, argv);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const qsizetype left = ZScreen::instance()->findChildren<QWidget*>().size();
    if (left > 0) {
        qWarning("the test left %lld widgets behind", static_cast<long long>(left));
        result = result == 0 ? 1 : result;
    }
    return result;
}

/// Makes a test object known to the main() that tests have unless they bring their own. It runs the
/// one whose name, in any case of letters, is the first argument, or the only one there is.
struct TestRegistration {
    using Run = int (*)(int argc, char** argv);

    TestRegistration(const char* name, Run run);
};

#define QUARN_TEST_MAIN(TestObject)                                                                \
    static const TestRegistration registered_##TestObject(#TestObject, runTest<TestObject>);
