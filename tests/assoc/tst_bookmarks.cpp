#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "platform/zpixmap.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"
#include "widgets/textinput.h"

#include <QDir>

#include <memory>

namespace
{

using Log = CommandLog;
using PhoneKey::Code;

const QString File = QStringLiteral("bookmark.cfg");

QString dialog()
{
    return Log::dialog(LANG_BOOKMARK, LANG_ADD_BOOKMARK + ':', QStringLiteral("bookmark"),
                       QString());
}

} // namespace

class tst_Bookmarks : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture_ = std::make_unique<CommandFixture>(); }
    void cleanup()
    {
        if (fixture_->window() != nullptr)
            QCOMPARE(fixture_->log().unused(), 0);
        fixture_.reset();
    }

    void firstBookmarkMakesTheFileWithAnEmptyLine_data() { addPages(); }
    void firstBookmarkMakesTheFileWithAnEmptyLine()
    {
        QFETCH(int, page);
        fixture_->start(page);
        add("Music");
        QCOMPARE(fixture_->log().take(), QStringList(dialog()));
        QCOMPARE(work().read(File), "\nMusic\n" + fixture_->folder(page).toUtf8());
        QCOMPARE(window()->bookmarkList, QStringList("Music"));
        QCOMPARE(window()->bookmarkPaths, QStringList(fixture_->folder(page)));
        QVERIFY(!textView->isUp());
    }

    void recordsAreAppendedByteForByte_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("of the program") << QByteArray("\nOne\n/one");
        QTest::newRow("made by hand") << QByteArray("One\n/one\n");
        QTest::newRow("not UTF-8") << QByteArray("\n\xff\xfe\n/\x80");
    }

    void recordsAreAppendedByteForByte()
    {
        QFETCH(QByteArray, before);
        work().write(File, before);
        fixture_->start();
        const QString name = QString::fromUtf8("Grüße Я");
        add(name);
        QCOMPARE(work().read(File),
                 before + '\n' + name.toUtf8() + '\n' + fixture_->left().toUtf8());
    }

    void cancelledDialogChangesNothing()
    {
        fixture_->start();
        fixture_->log().expect({[] {
            typeText("Music");
            no();
        }});
        chooseLast();
        QVERIFY(!work().exists(File));
        QVERIFY(window()->bookmarkList.isEmpty() && window()->bookmarkPaths.isEmpty());
        QCOMPARE(window()->bookmarkMenu->count(), 1);
    }

    void nameWithoutABeginningBecomesBookMark_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("name");
        QTest::newRow("empty") << ""
                               << "BookMark";
        QTest::newRow("a blank") << " "
                                 << "BookMark";
        QTest::newRow("a leading blank") << " Music"
                                         << "BookMark";
        QTest::newRow("a blank at the end") << "Music "
                                            << "Music ";
    }

    void nameWithoutABeginningBecomesBookMark()
    {
        QFETCH(QString, typed);
        QFETCH(QString, name);
        fixture_->start();
        add(typed);
        QCOMPARE(work().read(File), '\n' + name.toUtf8() + '\n' + fixture_->left().toUtf8());
        QCOMPARE(window()->bookmarkList, QStringList(name));
    }

    void dialogStartsEmptyEachTime()
    {
        fixture_->start();
        window()->textInput->inputText = "left over";
        add("One");
        add("Two");
        QCOMPARE(fixture_->log().take(), (QStringList{dialog(), dialog()}));
    }

    void menuGrowsInPlace()
    {
        work().write(File, "\nOne\n/one");
        fixture_->start();
        ZOptionsMenu* menu = window()->bookmarkMenu;
        for (const int count : {2, 3, 4}) {
            add("Name" + QString::number(count));
            QCOMPARE(window()->bookmarkMenu, menu);
            QCOMPARE(menu->count(), count + 1);
            QCOMPARE(menu->textAt(count - 1), "Name" + QString::number(count));
            QVERIFY(menu->iconAt(count - 1).isNull());
            QCOMPARE(menu->textAt(count), "\t\t\t" + LANG_ADD_BOOKMARK);
            QPixmap icon;
            QVERIFY(loadPixmap(icon, work_folder + "res/img/add.png"));
            QCOMPARE(menu->iconAt(count).toImage(), icon.toImage());
            for (int i = 0; i <= count; ++i)
                QCOMPARE(menu->idAt(i), i);
            QVERIFY(menu->isItemEnabled(count));
        }
        QCOMPARE(menu->textAt(0), QString("One"));
    }

    void addedBookmarkIsJumpedTo_data() { addPages(); }
    void addedBookmarkIsJumpedTo()
    {
        QFETCH(int, page);
        fixture_->files().makeFolder("left/sub");
        fixture_->start();
        fixture_->panel(1)->setDir(fixture_->left("sub"), 0);
        add("Sub");
        fixture_->panel(1)->setDir(fixture_->left(), 0);
        fixture_->goTo(page);
        fixture_->log().take();
        chooseAt(0);
        QCOMPARE(fixture_->log().take(), QStringList(Log::listed(fixture_->left("sub"))));
        QCOMPARE(fixture_->panel(page)->curPath, fixture_->left("sub"));
        QCOMPARE(fixture_->panel(page)->curIndex, 0);
        // It does not add one any more.
        QCOMPARE(window()->bookmarkList, QStringList("Sub"));
    }

    void twoMayHaveTheSameName()
    {
        fixture_->start();
        add("Same");
        add("Same");
        QCOMPARE(window()->bookmarkList, (QStringList{"Same", "Same"}));
        QCOMPARE(window()->bookmarkMenu->count(), 3);
    }

    void addedBookmarksAreThereAtTheNextStart()
    {
        fixture_->start();
        add("One");
        add("Two");
        const QByteArray content = work().read(File);
        fixture_.reset();
        fixture_ = std::make_unique<CommandFixture>();
        work().write(File, content);
        fixture_->start();
        QCOMPARE(window()->bookmarkList, (QStringList{"One", "Two"}));
        QCOMPARE(window()->bookmarkMenu->count(), 3);
    }

    void onTheAboutPageNothingIsJumpedToAndNoFolderIsKept()
    {
        work().write(File, "\nOne\n" + fixture_->right().toUtf8());
        fixture_->start();
        chooseAt(0);
        fixture_->goTo(3);
        fixture_->log().take();
        window()->slot_BookMark();
        QCOMPARE(fixture_->log().take(), QStringList());
        fixture_->log().expect({typing("Nowhere")});
        window()->slot_AddBookMark();
        QCOMPARE(window()->bookmarkPaths.last(), QString());
        QVERIFY(work().read(File).endsWith("\nNowhere\n"));
    }

    void unwritableFileKeepsTheBookmarkUntilTheEnd_data()
    {
        QTest::addColumn<QString>("what");
        for (const char* what : {"folder", "read-only", "pipe", "write-only"})
            QTest::newRow(what) << what;
    }

    void unwritableFileKeepsTheBookmarkUntilTheEnd()
    {
        QFETCH(QString, what);
        const QByteArray before("\nOne\n/one");
        if (what == "folder")
            work().makeFolder(File);
        else if (what == "pipe")
            work().makeFifo(File);
        else
            work().write(File, before);
        fixture_->start();
        const bool isFile = what == "read-only" || what == "write-only";
        if (isFile)
            work().setMode(File, what == "read-only" ? 0400 : 0200);
        add("Two");
        QVERIFY(!textView->isUp());
        QCOMPARE(window()->bookmarkList.last(), QString("Two"));
        QCOMPARE(window()->bookmarkPaths.last(), fixture_->left());
        if (isFile) {
            work().setMode(File, 0600);
            QCOMPARE(work().read(File), before);
        }
    }

    void folderWithALineBreakIsNotWritten()
    {
        fixture_->files().makeFolder("left/a\nb");
        fixture_->start();
        fixture_->panel(1)->setDir(fixture_->left("a\nb"), 0);
        add("Broken");
        QVERIFY(!work().exists(File) || work().read(File).isEmpty());
        QCOMPARE(window()->bookmarkPaths, QStringList(fixture_->left("a\nb")));
    }

    void lineBreaksInANameDoNotReachTheFile()
    {
        fixture_->start();
        fixture_->log().expect({[] {
            QWidget* field = keyReceiver();
            QKeyEvent paste(QEvent::KeyPress, 0, Qt::NoModifier, QStringLiteral("a\nb"));
            QCoreApplication::sendEvent(field, &paste);
            yes();
        }});
        chooseLast();
        QVERIFY(!work().exists(File) || work().read(File).count('\n') == 2);
    }

    void vanishedFolderIsThePanelsBusiness()
    {
        fixture_->files().makeFolder("left/sub");
        work().write(File, "\nGone\n" + fixture_->left("sub").toUtf8());
        fixture_->start();
        QVERIFY(QDir().rmdir(fixture_->left("sub")));
        chooseAt(0);
        QVERIFY(!textView->isUp());
        QCOMPARE(keyReceiver(), fixture_->panel(1));
    }

private:
    const ScratchFolder& work() const { return fixture_->program().workFolder(); }
    FM* window() const { return fixture_->window(); }

    /// Chooses an item of the bookmark submenu by keys.
    static void chooseAt(int position)
    {
        CommandFixture::choose(CommandFixture::Bookmarks);
        for (int i = 0; i < position; ++i)
            pressKey(Code::Down);
        pressKey(Code::Return);
    }

    void chooseLast() const { chooseAt(window()->bookmarkMenu->count() - 1); }

    void add(const QString& name)
    {
        fixture_->log().expect({typing(name)});
        chooseLast();
    }

    std::unique_ptr<CommandFixture> fixture_;
};

QUARN_TEST_MAIN(tst_Bookmarks)
#include "tst_bookmarks.moc"
