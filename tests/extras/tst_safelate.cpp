// What comes to its end when the user, who has cancelled it, has gone on long since.

#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "platform/zscreen.h"
#include "shell/fm.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/safecommandtest.h"
#include "tests/extras/safescreens.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFile>

#include <memory>
#include <optional>

class tst_SafeLate : public SafeCommandTest
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        faults_.reset();
        // What still goes on must not outlive the folders.
        QTRY_VERIFY(journals().isEmpty());
        SafeCommandTest::cleanup();
    }

    void whatGetsItsNameAtLastIsListed()
    {
        copyAndCancel();
        QVERIFY(!listed(2).contains("f"));
        faults_.reset();
        QTRY_COMPARE(listed(2), QStringList("f"));
        QCOMPARE(files().read("right/f/a"), QByteArray("f/a"));
        QCOMPARE(listed(1), QStringList("f"));
    }

    void onlyAFolderThatItWorkedInIsListed()
    {
        copyAndCancel();
        fixture_->panel(1)->setDir(fixture_->right(), 0);
        fixture_->panel(2)->setDir(fixture_->left(), 0);
        files().write("left/unseen", "");
        faults_.reset();
        QTRY_COMPARE(listed(1), QStringList("f"));
        QCOMPARE(listed(2), QStringList("f"));
    }

    /// What it asks about stays highlighted, and is what is deleted.
    void aQuestionComesFirst()
    {
        copyAndCancel();
        files().write("right/z", "z");
        fixture_->panel(2)->setDir(fixture_->right(), 0);
        fixture_->highlight("z");
        QStringList meanwhile;
        fixture_->log().expect({[this, &meanwhile] {
            faults_.reset();
            QTRY_VERIFY(journals().isEmpty());
            ZApplication::processEvents();
            meanwhile = listed(2);
            no();
        }});
        CommandFixture::choose(CommandFixture::Delete);
        QVERIFY(meanwhile.contains("z") && !meanwhile.contains("f"));
        QTRY_COMPARE(listed(2), (QStringList{"f", "z"}));
        QCOMPARE(fixture_->panel(2)->curFile, fixture_->right("z"));
    }

    /// As when the program is killed meanwhile.
    void theNextStartSaysThatItWasCancelled()
    {
        copyAndCancel();
        const QString journal = "quarn/journals/" + journals().value(0);
        const QByteArray notes = state_->read(journal);
        faults_.reset();
        QTRY_VERIFY(journals().isEmpty());
        state_->write(journal, notes);
        QStringList lines;
        once(pageHasKeys, [&lines] {
            lines = pageLines();
            pressKey(PhoneKey::SoftRight);
        });
        window()->offerUnfinished();
        QVERIFY(QFile::remove(state_->path(journal)));
        QCOMPARE(lines.value(0), QString("Copying: f"));
        QCOMPARE(lines.mid(2), QStringList("Was cancelled, not yet ended"));
    }

    void aWindowThatIsGoneIsNotTold()
    {
        copyAndCancel();
        delete quarn;
        quarn = nullptr;
        faults_.reset();
        QTRY_VERIFY(journals().isEmpty());
        ZApplication::processEvents();
        QVERIFY(QFile::exists(fixture_->right("f/a")));
    }

private:
    /// Copies a folder to the right, to where it waits for its name, and cancels that.
    void copyAndCancel()
    {
        fixture_->write(1, {"f/a", "f/b"});
        fixture_->start();
        fixture_->toClipboard(CommandFixture::Copy, "f", 2);
        faults_.emplace();
        faults_->hold(CallFaults::Call::Rename);
        once([this] { return operationBox() != nullptr && faults_->isHolding(); },
             [] { pressKey(PhoneKey::SoftRight); });
        fixture_->paste();
        QVERIFY(faults_->isHolding());
        QCOMPARE(journals().size(), 1);
    }

    QStringList journals() const
    {
        return QDir(state_->path("quarn/journals")).entryList(QDir::Files | QDir::Hidden);
    }
    QStringList listed(int page) const
    {
        QStringList names = fixture_->program().rows(page);
        names.removeAll("..");
        names.sort();
        return names;
    }

    std::optional<CallFaults> faults_;
};

QUARN_TEST_MAIN(tst_SafeLate)
#include "tst_safelate.moc"
