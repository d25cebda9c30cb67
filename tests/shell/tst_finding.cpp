#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "platform/zbubble.h"
#include "platform/zlistfind.h"
#include "platform/zscreen.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/support/debuglines.h"
#include "tests/support/keys.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <memory>

/// Finding entries of the panels by keys.
class tst_Finding : public QObject
{
    Q_OBJECT

private slots:
    void init() { program_ = std::make_unique<Program>(); }
    void cleanup() { program_.reset(); }

    void digitsFindAnEntryInBothPanels()
    {
        begin(true);
        for (const int page : {1, 2}) {
            press("362");
            QCOMPARE(current(page), QString("Documents"));
            QCOMPARE(program_->panel(page)->curFile, program_->files().path("Documents"));
            QCOMPARE(bubble(page)->text(), QString("Doc"));
            pressKey(PhoneKey::Right);
        }
    }

    void lettersFindAnEntry()
    {
        begin(true);
        press("no");
        QCOMPARE(current(1), QString("notes.txt"));
        press("n");
        QVERIFY(bubble(1)->isWarning());
        QCOMPARE(current(1), QString("notes.txt"));
    }

    void backEntryIsNeverFound()
    {
        begin(true);
        press("n");
        press("1.");
        QVERIFY(bubble(1)->isWarning());
        pressKey(PhoneKey::Clear);
        press("1");
        QCOMPARE(current(1), QString(".hidden"));
    }

    void clearKeyGoesAFolderUpOnlyWithoutASearch()
    {
        begin(true);
        const QString folder = program_->panel(1)->curPath;
        press("d");
        pressKey(PhoneKey::Clear);
        QCOMPARE(program_->panel(1)->curPath, folder);
        QCOMPARE(current(1), QString("Documents"));
        pressKey(PhoneKey::Clear);
        QVERIFY(program_->panel(1)->curPath != folder);
    }

    void otherKeysDoWhatTheyAlwaysDo()
    {
        begin(true);
        takeForActive(ZScreen::instance()->window());
        press("d0");
        QVERIFY(program_->panel(1)->isMultiSelect());
        QVERIFY(!bubble(1)->isVisible());
        press("d#");
        QCOMPARE(program_->panel(1)->item(1)->subItemCount(1), 2);
        press("d*");
        QVERIFY(full_scr);
        press("d");
        pressKey(PhoneKey::Return);
        QVERIFY(program_->panel(1)->itemChecked(program_->panel(1)->currentItem()));
        press("d");
        pressKey(PhoneKey::SoftLeft);
        QVERIFY(!bubble(1)->isVisible());
    }

    void modifierWithADigitOpensAFile()
    {
        begin(true);
        program_->highlight(1, "notes.txt");
        holdKey(PhoneKey::Modifier);
        const DebugLines lines;
        pressKey('3');
        // There is no plugin of that number.
        QTRY_COMPARE(keyReceiver(), textView);
        QCOMPARE(current(1), QString("notes.txt"));
        pressKey(PhoneKey::SoftRight);
        QVERIFY(!textView->isUp());
        releaseKey(PhoneKey::Modifier);
        // The box of a start that was below it lets no key through while it lasts.
        QTRY_COMPARE(keyReceiver(), program_->panel(1));
        press("3");
        QCOMPARE(current(1), QString("Documents"));
    }

    void searchEndsWhenAFolderIsOpened()
    {
        begin(true);
        press("d");
        pressKey(PhoneKey::Return);
        QCOMPARE(program_->panel(1)->curPath, program_->files().path("Documents"));
        QVERIFY(!bubble(1)->isVisible());
    }

    void pagesThatAreTurnedQuicklyShowTheLetterOfTheirRow()
    {
        for (int i = 0; i < 40; ++i)
            program_->files().write(QString("%1 file").arg(QChar('a' + i / 2)));
        begin(true);
        FileBrowserFtab* panel = program_->panel(1);
        int turned = 0;
        // A slow machine may need several tries to be quick.
        QTRY_VERIFY(++turned > 0 &&
                    (pressKey(turned % 2 == 1 ? PhoneKey::PageDown : PhoneKey::PageUp),
                     bubble(1) != nullptr && bubble(1)->isVisible()));
        QVERIFY(bubble(1)->isLetter());
        QCOMPARE(bubble(1)->text(),
                 panel->item(panel->currentItem())->getSubItemText(1, 0).left(1).toUpper());
    }

    void withoutTheExtraLettersAndDigitsDoNothing()
    {
        begin(false);
        press("d362n1");
        QCOMPARE(program_->panel(1)->currentItem(), 0);
        QVERIFY(program_->panel(1)->findChildren<ZListFind*>().isEmpty());
        QVERIFY(program_->panel(1)->findChildren<ZBubble*>().isEmpty());
    }

private:
    void begin(bool find)
    {
        program_->files().makeFolder("Documents");
        for (const char* name : {".hidden", "Music.mp3", "notes.txt"})
            program_->files().write(name);
        extras.find = find;
        program_->start();
    }

    static void press(const char* keys)
    {
        for (const char* key = keys; *key != '\0'; ++key)
            pressKey(*key);
    }

    QString current(int page) const { return program_->panel(page)->curFile.section('/', -1); }
    ZBubble* bubble(int page) const { return program_->panel(page)->findChild<ZBubble*>(); }

    std::unique_ptr<Program> program_;
};

QUARN_TEST_MAIN(tst_Finding)
#include "tst_finding.moc"
