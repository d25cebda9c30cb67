#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "shell/statusline.h"
#include "tests/support/keys.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <memory>

/// What the soft-key bar says of the place in the folders and of what is noted.
class tst_StatusLine : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        program_ = std::make_unique<Program>();
        for (const char* name : {"first/a", "first/b", "first/c", "second/deep/x"})
            program_->files().write(name);
        path_tab1 = program_->files().path("first");
        path_tab2 = program_->files().path("second");
    }

    void cleanup() { program_.reset(); }

    void folderAndPlaceOfTheEntry()
    {
        begin();
        // Over the way back only how many there are.
        QCOMPARE(status(), QString("first 3"));
        pressKey(PhoneKey::Down);
        QCOMPARE(status(), QString("first 1/3"));
        pressKey(PhoneKey::PageDown);
        QCOMPARE(status(), QString("first 3/3"));
    }

    void everyTabHasItsOwn()
    {
        begin();
        pressKey(PhoneKey::Right);
        QCOMPARE(status(), QString("second 1"));
        pressKey(PhoneKey::Down);
        QCOMPARE(status(), QString("second 1/1"));
        pressKey(PhoneKey::Right);
        QCOMPARE(status(), QString(" "));
        pressKey(PhoneKey::Left);
        pressKey(PhoneKey::Left);
        QCOMPARE(status(), QString("first 3"));
    }

    void itFollowsIntoFoldersAndOut()
    {
        path_tab1 = program_->files().path("second");
        begin();
        pressKey(PhoneKey::Down);
        pressKey(PhoneKey::Return);
        QCOMPARE(status(), QString("deep 1"));
        pressKey(PhoneKey::FolderUp);
        QCOMPARE(status(), QString("second 1"));
    }

    void rootHasItsPathForAName()
    {
        path_tab1 = "/";
        begin();
        const int entries = program_->panel(1)->count();
        QCOMPARE(status(), QString("/ 1/%1").arg(entries));
    }

    void emptyFolder()
    {
        program_->files().makeFolder("empty");
        path_tab1 = program_->files().path("empty");
        begin();
        QCOMPARE(status(), QString("empty 0"));
    }

    void folderThatCannotBeReadHasNone()
    {
        path_tab1 = program_->files().path("nowhere");
        begin();
        QCOMPARE(status(), QString(" "));
    }

    void listingAnewCountsAnew()
    {
        begin();
        program_->files().write("first/d");
        program_->panel(1)->setDir(program_->panel(1)->curPath, 2);
        QCOMPARE(status(), QString("first 2/4"));
    }

    void multiSelectionSaysHowManyAreMarked()
    {
        begin();
        pressKey('0');
        QCOMPARE(status(), QString("first 0 marked"));
        pressKey(PhoneKey::Down);
        pressKey(PhoneKey::Return);
        QCOMPARE(status(), QString("first 1 marked"));
        pressKey(PhoneKey::Down);
        pressKey(PhoneKey::Return);
        QCOMPARE(status(), QString("first 2 marked"));
        pressKey(PhoneKey::Return);
        QCOMPARE(status(), QString("first 1 marked"));
        pressKey('0');
        QCOMPARE(status(), QString("first 2/3"));
    }

    void markingByTapIsCounted()
    {
        begin();
        pressKey('0');
        FileBrowserFtab* panel = program_->panel(1);
        const QPoint row = panel->mapTo(ZScreen::instance(),
                                        QPoint(60, panel->rowHeight() + panel->rowHeight() / 2));
        tapScreen(row);
        QCOMPARE(status(), QString("first 1 marked"));
    }

    void whatIsNotedStandsThereUntilThePaste_data()
    {
        QTest::addColumn<int>("command");
        QTest::addColumn<QString>("noted");
        QTest::newRow("copy") << int('1') << "to copy";
        QTest::newRow("move") << int('2') << "to move";
    }

    void whatIsNotedStandsThereUntilThePaste()
    {
        QFETCH(int, command);
        QFETCH(QString, noted);
        begin();
        pressKey(PhoneKey::Down);
        pressKeys({PhoneKey::SoftLeft, '3', command});
        QCOMPARE(status(), "first 1 " + noted);
        pressKey(PhoneKey::Right);
        QCOMPARE(status(), "second 1 " + noted);
        pressKey(PhoneKey::Down);
        QCOMPARE(status(), "second 1 " + noted);
        // With nothing to paste nothing is asked, and the paste is over all the same.
        quarn->clipboardList.clear();
        pressKeys({PhoneKey::SoftLeft, '3', '3'});
        QCOMPARE(status(), QString("second 1/1"));
    }

    void severalThatAreNoted()
    {
        begin();
        pressKeys({'0', PhoneKey::Down, PhoneKey::Return, PhoneKey::Down, PhoneKey::Return});
        pressKeys({PhoneKey::SoftLeft, '3', '1'});
        QCOMPARE(status(), QString("first 2 to copy"));
        pressKeys({PhoneKey::SoftLeft, '3', '2'});
        QCOMPARE(status(), QString("first 1 to move"));
        // What is being marked is nearer.
        pressKey('0');
        QCOMPARE(status(), QString("first 0 marked"));
    }

    void nothingMarkedIsNothingToCopy()
    {
        begin();
        pressKey('0');
        pressKeys({PhoneKey::SoftLeft, '3', '1'});
        QCOMPARE(status(), QString("first 0 to copy"));
    }

    void textsAreThoseOfTheLanguage()
    {
        program_->workFolder().write("lang/pirate.lang",
                                     "[Language]\nVER = 102\nMARKED = Arr: %1\n");
        lang = "pirate";
        begin();
        pressKey('0');
        QCOMPARE(status(), QString("first Arr: 0"));
        lang = QString();
    }

    void boxesAndMenusHideIt()
    {
        begin();
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(status(), QString(" "));
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(status(), QString("first 3"));
    }

    void withoutTheExtraThereIsNone()
    {
        program_->start();
        QCOMPARE(status(), QString(" "));
        QVERIFY(quarn->findChildren<StatusLine*>().isEmpty());
        pressKeys({'0', PhoneKey::Down, PhoneKey::Return});
        QCOMPARE(status(), QString(" "));
        QCOMPARE(quarn->softKey->accessibleDescription(), QString());
    }

private:
    void begin()
    {
        extras.status = true;
        program_->start();
    }

    static void pressKeys(const QList<int>& keys)
    {
        for (const int key : keys)
            pressKey(key);
    }

    /// What is shown, as soon as the program has nothing left to do.
    static QString status()
    {
        QCoreApplication::processEvents();
        return quarn->softKey->shownStatus().join(' ');
    }

    std::unique_ptr<Program> program_;
};

QUARN_TEST_MAIN(tst_StatusLine)
#include "tst_statusline.moc"
