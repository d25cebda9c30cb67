#include "browser/filebrowserftab.h"
#include "files/entrytexts.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/qcopchannel.h"
#include "platform/zoptionsmenu.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandfixture.h"
#include "tests/fileops/duringwork.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QDir>

#include <memory>

namespace
{

using Log = CommandLog;

constexpr int FileBytes = 1000;

} // namespace

/// What happens while the properties of a folder are gathered. The folder has ten files of 1000
/// bytes: four at the top, three in each of two levels below, and an empty one.
class tst_WalkCancel : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        fixture_ = std::make_unique<CommandFixture>();
        for (const char* name :
             {"0", "1", "2", "3", "s/4", "s/5", "s/6", "s/t/7", "s/t/8", "s/t/9"})
            fixture_->files().write(QStringLiteral("left/a/") + name, QByteArray(FileBytes, 'x'));
        fixture_->files().makeFolder("left/a/z");
        window_ = fixture_->start();
        fixture_->highlight("a");
    }

    void cleanup() { fixture_.reset(); }

    void walkThatIsNotCancelledCountsAll()
    {
        window_->slot_Properties();
        QCOMPARE(sizeSection(), sizeText(10, 3, QString()));
    }

    void keyCancelsTheWalkAtEveryLevel_data()
    {
        QTest::addColumn<int>("atFile");
        QTest::addColumn<int>("files");
        QTest::addColumn<int>("folders");
        // The next subfolder of each level is begun before the cancelling is seen there.
        QTest::newRow("first file") << 1 << 3 << 2;
        QTest::newRow("among the files") << 2 << 4 << 2;
        QTest::newRow("last file of the top") << 4 << 6 << 2;
        QTest::newRow("in the subfolder") << 6 << 7 << 2;
        QTest::newRow("at the bottom") << 8 << 8 << 2;
        QTest::newRow("last file of all") << 10 << 10 << 2;
    }

    void keyCancelsTheWalkAtEveryLevel()
    {
        QFETCH(int, atFile);
        QFETCH(int, files);
        QFETCH(int, folders);
        cancelAt(atFile, [] { pressKey(PhoneKey::SoftRight); });
        QCOMPARE(sizeSection(), sizeText(files, folders, ">"));
        QCOMPARE(window_->fileCount, files);
        QCOMPARE(window_->dirCount, folders);
    }

    void anyKeyButTheArrowsCancels_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("cancels");
        QTest::newRow("right soft key") << int(PhoneKey::SoftRight) << true;
        QTest::newRow("left soft key") << int(PhoneKey::SoftLeft) << true;
        QTest::newRow("digit") << int('5') << true;
        QTest::newRow("hide") << int(PhoneKey::Hide) << true;
        QTest::newRow("up") << int(PhoneKey::Up) << false;
        QTest::newRow("left") << int(PhoneKey::Left) << false;
    }

    void anyKeyButTheArrowsCancels()
    {
        QFETCH(int, code);
        QFETCH(bool, cancels);
        cancelAt(2, [code] { pressKey(code); });
        QCOMPARE(sizeSection().contains('>'), cancels);
        QVERIFY(window_->isVisible());
    }

    void clickOnTheBarCancels()
    {
        cancelAt(2, [] {
            QTest::mouseClick(processView, Qt::LeftButton, {},
                              processView->rect().bottomLeft() + QPoint(110, -5));
        });
        QCOMPARE(sizeSection(), sizeText(4, 2, ">"));
    }

    void boxOfTheWalkIsGoneWhenTheResultIsShown()
    {
        cancelAt(2, [] { pressKey(PhoneKey::SoftRight); });
        QVERIFY(!processView->isUp() && processView->isHidden());
        QVERIFY(textView->isUp());
        fixture_->dismissMessage();
    }

    void cancellingIsForgottenByTheNextWalk()
    {
        cancelAt(2, [] { pressKey(PhoneKey::SoftRight); });
        fixture_->dismissMessage();
        window_->slot_Properties();
        QCOMPARE(sizeSection(), sizeText(10, 3, QString()));
    }

    void keysDoNotReachTheWindowBeforeTheBoxComesUp()
    {
        const DuringWork press([this] { return window_->fileCount == 1; },
                               [] {
                                   pressKey('*');
                                   pressKey(PhoneKey::SoftLeft);
                               });
        window_->slot_Properties();
        QVERIFY(press.hasHappened());
        QVERIFY(!full_scr);
        QVERIFY(!window_->optionsMenu->isVisible());
    }

    void anotherStartShowsTheWindowDuringTheWalk()
    {
        window_->hide();
        const DuringWork start([this] { return window_->fileCount == 2; },
                               [this] {
                                   QVERIFY(QCopChannel::send("Quarn", "show()"));
                                   QTRY_VERIFY(window_->isVisible());
                                   awaitKeys(*processView);
                               });
        window_->slot_Properties();
        QVERIFY(start.hasHappened());
        QCOMPARE(sizeSection(), sizeText(10, 3, QString()));
        fixture_->dismissMessage();
    }

    void windowThatIsToCloseAsksAndTheWalkGoesOn()
    {
        fixture_->log().expect({no});
        cancelAt(2, [] {
            requestClose();
            awaitKeys(*processView);
        });
        QCOMPARE(fixture_->log().unused(), 0);
        QVERIFY(
            fixture_->log().take().contains(Log::question(LANG_EXIT, LANG_EXIT_SURE, "warning")));
        QCOMPARE(sizeSection(), sizeText(10, 3, QString()));
    }

    void modifierReleasedDuringTheWalkIsReleased()
    {
        holdKey(PhoneKey::Modifier);
        QVERIFY(window_->modKeyHeld);
        cancelAt(2, [] { releaseKey(PhoneKey::Modifier); });
        QVERIFY(!window_->modKeyHeld);
        QCOMPARE(sizeSection(), sizeText(10, 3, QString()));
    }

    void folderThatVanishesDuringTheWalkIsCountedAsFarAsItWas()
    {
        cancelAt(6, [this] { QVERIFY(QDir(fixture_->left("a")).removeRecursively()); });
        // What a folder holds is read before its files are counted.
        QCOMPARE(sizeSection(), sizeText(7, 3, QString()));
        // What it was is asked before the walk.
        QVERIFY(textView->shownText().contains("RWX"));
    }

    // The process cannot take a request to quit back, so this comes last.
    void endOfTheProgramEndsTheWalk()
    {
        cancelAt(2, [] { ZApplication::quit(); });
        QCOMPARE(window_->fileCount, 4);
        QVERIFY(!processView->isUp());
    }

private:
    /// Shows the properties and acts when that many files are counted and the box has the keys.
    void cancelAt(int file, const std::function<void()>& action)
    {
        const DuringWork cancel([this, file] { return window_->fileCount == file; },
                                [&action] {
                                    awaitKeys(*processView);
                                    action();
                                });
        window_->slot_Properties();
        QVERIFY(cancel.hasHappened());
    }

    static QString sizeSection() { return textView->shownText().section("<hr>", 1, 1); }

    static QString sizeText(int files, int folders, const QString& mark)
    {
        const int bytes = files * FileBytes;
        return " Size: " + mark + ::sizeText(bytes) + " (" + mark + QString::number(bytes) +
               " b)\n Dirs: " + mark + QString::number(folders) + " | Files: " + mark +
               QString::number(files);
    }

    std::unique_ptr<CommandFixture> fixture_;
    FM* window_ = nullptr;
};

QUARN_TEST_MAIN(tst_WalkCancel)
#include "tst_walkcancel.moc"
