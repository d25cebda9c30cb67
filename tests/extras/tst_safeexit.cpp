// The question whether to leave the program, asked while the module "extras" works.

#include "shell/fm.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/safecommandtest.h"
#include "tests/support/later.h"
#include "tests/support/testmain.h"

#include <QAbstractEventDispatcher>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <memory>
#include <optional>

namespace
{

/// Lets the program go on for that long.
void goOnFor(int milliseconds)
{
    QElapsedTimer since;
    since.start();
    QTRY_VERIFY(since.elapsed() >= milliseconds);
}

} // namespace

class tst_SafeExit : public SafeCommandTest
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        faults_.reset();
        SafeCommandTest::cleanup();
    }

    void whatEndsUnderItKeepsNoProcessorBusy()
    {
        startCopy();
        int turns = 0;
        fixture_->log().expect({[this, &turns] {
            faults_.reset();
            QTRY_VERIFY(QFile::exists(fixture_->right("a")) && journals().isEmpty());
            const auto counting =
                connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                        this, [&turns] { ++turns; });
            goOnFor(300);
            disconnect(counting);
            no();
        }});
        fixture_->paste();
        QVERIFY2(turns < 300, qPrintable(QString::number(turns)));
        QCOMPARE(files().read("right/a"), QByteArray("a"));
    }

private:
    /// One that hangs as soon as it reads, and asks to leave then.
    void startCopy()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->toClipboard(CommandFixture::Copy, "a", 2);
        faults_.emplace();
        faults_->hold(CallFaults::Call::Read);
        once([this] { return faults_->isHolding(); },
             [this] { QMetaObject::invokeMethod(window(), "slotCloseRequested"); });
    }
    QStringList journals() const
    {
        return QDir(state_->path("quarn/journals")).entryList({"*.journal"}, QDir::Files);
    }

    std::optional<CallFaults> faults_;
};

QUARN_TEST_MAIN(tst_SafeExit)
#include "tst_safeexit.moc"
