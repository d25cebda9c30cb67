// Trashes of file systems that may never answer.

#include "extras/fartrashes.h"
#include "tests/extras/trashplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdarg>
#include <memory>
#include <mutex>

namespace
{

/// Whoever opens a path that begins so is counted, and waits until it is let go.
struct Gate {
    std::mutex mutex;
    std::condition_variable opened;
    QByteArray path;
    bool isOpen = true;
    int waiting = 0;
    int passes = 0;

    void watch(const QByteArray& start)
    {
        const std::lock_guard lock(mutex);
        path = start;
        passes = 0;
    }
    void shut(const QByteArray& start)
    {
        watch(start);
        const std::lock_guard lock(mutex);
        isOpen = false;
    }
    void open()
    {
        const std::lock_guard lock(mutex);
        isOpen = true;
        opened.notify_all();
    }
    void pass(const char* wanted)
    {
        std::unique_lock lock(mutex);
        if (path.isEmpty() || !QByteArrayView(wanted).startsWith(path))
            return;
        ++passes;
        if (isOpen)
            return;
        ++waiting;
        opened.wait(lock, [this] { return isOpen; });
        --waiting;
    }
    int passed()
    {
        const std::lock_guard lock(mutex);
        return passes;
    }
    int waiters()
    {
        const std::lock_guard lock(mutex);
        return waiting;
    }
};

Gate gate;

} // namespace

// In the place of the system's own, for everything in the process.
extern "C" int open(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const auto mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(more, mode_t) : mode_t(0);
    va_end(more);
    gate.pass(path);
    return int(syscall(SYS_openat, AT_FDCWD, path, flags | O_LARGEFILE, mode));
}

class tst_FarTrashes : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        places_.emplace(TrashPlaces::Elsewhere);
        places_->tellMount("fuse.sshfs", "rw");
        making::file(places_->top("a"), "a");
        QCOMPARE(places_->trash().put(places_->top("a")).outcome, Trash::Outcome::Done);
    }
    void cleanup()
    {
        gate.open();
        QTRY_COMPARE(gate.waiters(), 0);
        places_.reset();
    }

    void whatIsFarIsListedWhenItAnswers()
    {
        int answers = 0;
        FarTrashes far(places_->trash(), [&answers] { ++answers; });
        QVERIFY(far.entries().isEmpty());
        far.ask();
        QTRY_COMPARE(answers, 1);
        QCOMPARE(far.entries().size(), 1);
        QCOMPARE(far.entries().first().path, places_->top("a"));
        // Each asking has an answer, and what is new is in it.
        making::file(places_->top("b"), "b");
        QCOMPARE(places_->trash().put(places_->top("b")).outcome, Trash::Outcome::Done);
        far.ask();
        QTRY_COMPARE(answers, 2);
        QCOMPARE(far.entries().size(), 2);
        far.drop(far.entries().first());
        QCOMPARE(far.entries().size(), 1);
    }

    void nobodyWaitsForWhatDoesNotAnswer()
    {
        gate.shut(places_->top());
        int answers = 0;
        FarTrashes far(places_->trash(), [&answers] { ++answers; });
        far.ask();
        QTRY_COMPARE(gate.waiters(), 1);
        QVERIFY(far.entries().isEmpty());
        QVERIFY(places_->trash().entries().isEmpty());
        // What is being asked is not asked once more.
        far.ask();
        QCOMPARE(gate.waiters(), 1);
        gate.open();
        QTRY_COMPARE(answers, 1);
        QCOMPARE(far.entries().size(), 1);
    }

    /// An answer that was on its way when something changed is not the last word.
    void whatIsAskedMeanwhileIsAskedAfterwards()
    {
        int answers = 0;
        FarTrashes far(places_->trash(), [&answers] { ++answers; });
        gate.watch(places_->top());
        far.ask();
        QTRY_COMPARE(answers, 1);
        const int once = gate.passed();
        gate.shut(places_->top());
        far.ask();
        QTRY_COMPARE(gate.waiters(), 1);
        far.ask();
        gate.open();
        QTRY_COMPARE(answers, 2);
        QCOMPARE(gate.passed(), 2 * once);
        gate.shut(places_->top());
        far.ask();
        QTRY_COMPARE(gate.waiters(), 1);
        far.drop(far.entries().first());
        QVERIFY(far.entries().isEmpty());
        gate.open();
        QTRY_COMPARE(answers, 3);
        QCOMPARE(gate.passed(), 2 * once);
        QCOMPARE(far.entries().size(), 1);
    }

    void whoHasLostInterestWaitsForNothing()
    {
        gate.shut(places_->top());
        auto far = std::make_unique<FarTrashes>(places_->trash(), [] { QFAIL("nobody asks"); });
        far->ask();
        QTRY_COMPARE(gate.waiters(), 1);
        far.reset();
        QCOMPARE(gate.waiters(), 1);
        gate.open();
        QTRY_COMPARE(gate.waiters(), 0);
        QCoreApplication::processEvents();
    }

    void whatOthersHaveLeftHalfIsTidied()
    {
        const QByteArray stale = places_->ownTrash() + "/info/gone.trashinfo";
        making::file(stale, "[Trash Info]\nPath=gone\n");
        making::age(stale, 1300000000);
        int answers = 0;
        FarTrashes far(places_->trash(), [&answers] { ++answers; });
        far.ask();
        QTRY_COMPARE(answers, 1);
        QVERIFY(!isThere(stale));
    }

private:
    std::optional<TrashPlaces> places_;
};

QUARN_TEST_MAIN(tst_FarTrashes)
#include "tst_fartrashes.moc"
