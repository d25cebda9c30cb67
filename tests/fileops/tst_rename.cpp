#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandtest.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/tools/filesystems.h"
#include "widgets/kwidget.h"
#include "widgets/textinput.h"

#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLineEdit>

namespace
{

using Log = CommandLog;
using Fixture = CommandFixture;

QString dialog(const QString& name)
{
    return Log::dialog(LANG_RENAME, LANG_RENAME + " \"" + name + "\":", "rename", name);
}

QString taken()
{
    return Log::message(LANG_ERROR, LANG_RENAME_EXISTS, "error");
}

QString refused()
{
    return Log::message(LANG_ERROR, LANG_RENAME_ERROR, "error");
}

} // namespace

class tst_Rename : public CommandTest
{
    Q_OBJECT

private slots:
    void entryGetsTheTypedNameAndBothPanelsAreListed_data() { addPages(); }
    void entryGetsTheTypedNameAndBothPanelsAreListed()
    {
        QFETCH(int, page);
        fixture_->write(page, {"a", "b", "c"});
        fixture_->start(page);
        rename("a", typing("z"));
        // The panel's own folder comes first, and as the name's beginning: with "/" at its end.
        QCOMPARE(log(), (QStringList{dialog("a"), Log::listed(fixture_->folder(page) + '/'),
                                     Log::listed(fixture_->folder(3 - page))}));
        QCOMPARE(fixture_->program().rows(page), (QStringList{"..", "b", "c", "z"}));
        QCOMPARE(fixture_->panel(page)->curPath, fixture_->folder(page));
        // The row number stays; the renamed entry has gone to another row.
        QCOMPARE(fixture_->panel(page)->curIndex, 1);
        QCOMPARE(fixture_->panel(page)->curFile, fixture_->folder(page) + "/b");
        QCOMPARE(QString::fromUtf8(fixture_->files().read(page == 1 ? "left/z" : "right/z")),
                 QStringLiteral("a"));
        QVERIFY(!textView->isUp());
        QCOMPARE(keyReceiver(), fixture_->panel(page));
    }

    void folderIsRenamedWithAllThatIsInIt()
    {
        fixture_->write(1, {"f/in", "f/g/deep"});
        fixture_->start();
        rename("f", typing("h"));
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "h"}));
        QVERIFY(QFile::exists(fixture_->left("h/g/deep")));
    }

    void otherPanelShowsTheNewNameToo()
    {
        path_tab2 = fixture_->left();
        fixture_->write(1, {"a"});
        fixture_->start();
        rename("a", typing("b"));
        QCOMPARE(fixture_->program().rows(2), (QStringList{"..", "b"}));
    }

    void fieldBeginsWithTheNameAndCanBeChangedAtItsEnd()
    {
        fixture_->write(1, {"name"});
        fixture_->start();
        rename("name", [] {
            const auto* field = qobject_cast<QLineEdit*>(keyReceiver());
            QVERIFY(field != nullptr);
            QCOMPARE(field->text(), QStringLiteral("name"));
            QCOMPARE(field->selectedText(), QStringLiteral("name"));
            pressKey(PhoneKey::Right);
            typeText(".txt");
            yes();
        });
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "name.txt"}));
    }

    void cancelledDialogChangesNothing()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        rename("a", [] {
            typeText("b");
            no();
        });
        QCOMPARE(log(), QStringList(dialog("a")));
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "a"}));
        QVERIFY(QFile::exists(fixture_->left("a")) && !textView->isUp());
        QCOMPARE(keyReceiver(), fixture_->panel(1));
    }

    void nameThatIsTakenIsRefused_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("its own") << "a";
        QTest::newRow("nothing, which is the folder itself") << "";
        QTest::newRow("a file's") << "file";
        QTest::newRow("a folder's") << "folder";
        QTest::newRow("a folder's and a slash") << "folder/";
        QTest::newRow("a link's") << "link";
        QTest::newRow("the name of a link that leads nowhere") << "dangling";
        QTest::newRow("a pipe's") << "pipe";
        QTest::newRow("this folder") << ".";
        QTest::newRow("the folder above") << "..";
        QTest::newRow("in another folder") << "folder/in";
        QTest::newRow("in the folder above") << "../left";
    }

    void nameThatIsTakenIsRefused()
    {
        QFETCH(QString, typed);
        fixture_->write(1, {"a", "file", "folder/in"});
        fixture_->files().makeLink("left/link", "file");
        fixture_->files().makeLink("left/dangling", "nowhere");
        fixture_->files().makeFifo("left/pipe");
        fixture_->start();
        const QStringList rows = fixture_->program().rows(1);
        rename("a", typing(typed));
        QCOMPARE(log(), (QStringList{dialog("a"), taken()}));
        fixture_->dismissError(LANG_RENAME_EXISTS);
        QCOMPARE(fixture_->files().read("left/a"), QByteArray("a"));
        QCOMPARE(fixture_->files().read("left/file"), QByteArray("file"));
        QVERIFY(QFileInfo(fixture_->left("dangling")).isSymLink());
        QVERIFY(!QFile::exists(fixture_->left("nowhere")));
        fixture_->panel(1)->setDir(fixture_->left(), 0);
        QCOMPARE(fixture_->program().rows(1), rows);
    }

    void renamingThatTheFileSystemRefusesIsReported_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("typed");
        QTest::newRow("into a missing folder") << "a"
                                               << "missing/a";
        QTest::newRow("through a file") << "a"
                                        << "file/a";
        QTest::newRow("file to a name with a slash") << "a"
                                                     << "b/";
        QTest::newRow("folder into itself") << "folder"
                                            << "folder/sub";
        QTest::newRow("too long") << "a" << QString(256, 'x');
        QTest::newRow("the back entry") << ".."
                                        << "up";
    }

    void renamingThatTheFileSystemRefusesIsReported()
    {
        QFETCH(QString, name);
        QFETCH(QString, typed);
        fixture_->write(1, {"a", "file", "folder/in"});
        fixture_->start();
        rename(name, typing(typed));
        QCOMPARE(log(), (QStringList{dialog(name), refused()}));
        QCOMPARE(textView->shownText(), LANG_RENAME_ERROR);
        fixture_->dismissMessage();
        QVERIFY(QFile::exists(fixture_->left("a")) && QFile::exists(fixture_->left("folder/in")));
    }

    void renamingInAProtectedFolderIsReported()
    {
        fixture_->write(1, {"a", "g/keep"});
        fixture_->start();
        fixture_->files().setMode("left", 0555);
        rename("a", typing("b"));
        QCOMPARE(log(), (QStringList{dialog("a"), refused()}));
        fixture_->dismissMessage();
        // Not even by way of a copy.
        rename("a", typing("g/b"));
        QCOMPARE(log(), (QStringList{dialog("a"), refused()}));
        fixture_->dismissMessage();
        QVERIFY(QFile::exists(fixture_->left("a")) && !QFile::exists(fixture_->left("g/b")));
    }

    void entryThatVanishedIsReported()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        rename("a", [this] {
            QVERIFY(QFile::remove(fixture_->left("a")));
            typing("b")();
        });
        QCOMPARE(log(), (QStringList{dialog("a"), refused()}));
        fixture_->dismissMessage();
    }

    void nameThatIsTakenWhileItIsTypedIsRefused()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        rename("a", [this] {
            fixture_->write(1, {"b"});
            typing("b")();
        });
        QCOMPARE(log(), (QStringList{dialog("a"), taken()}));
        QCOMPARE(fixture_->files().read("left/b"), QByteArray("b"));
        fixture_->dismissMessage();
    }

    void typedPathMovesTheEntry_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("below") << "folder/b";
        QTest::newRow("above") << "../right/b";
        QTest::newRow("with a slash before it") << "/folder/b";
    }

    void typedPathMovesTheEntry()
    {
        QFETCH(QString, typed);
        fixture_->write(1, {"a", "folder/in"});
        fixture_->start();
        rename("a", typing(typed));
        QCOMPARE(log(), (QStringList{dialog("a"), Log::listed(fixture_->left() + '/'),
                                     Log::listed(fixture_->right())}));
        QVERIFY(!QFile::exists(fixture_->left("a")));
        QCOMPARE(fixture_->files().read("left/" + typed), QByteArray("a"));
    }

    void renamingDoesNotCrossFileSystems_data()
    {
        QTest::addColumn<bool>("pipe");
        QTest::newRow("file") << false;
        QTest::newRow("pipe, which nobody writes") << true;
    }

    void renamingDoesNotCrossFileSystems()
    {
        QFETCH(bool, pipe);
        const OwnFolder other(otherPlace());
        const QString elsewhere = QFile::decodeName(other.path("b"));
        if (pipe)
            fixture_->files().makeFifo("left/a");
        else
            fixture_->write(1, {"a"});
        fixture_->start();
        QString way;
        for (qsizetype i = fixture_->left().count('/'); i > 0; --i)
            way += "../";
        rename("a", typing(way + elsewhere.mid(1)));
        QCOMPARE(log(), (QStringList{dialog("a"), refused()}));
        QVERIFY(fixture_->files().exists("left/a"));
        QVERIFY(other.names().isEmpty());
        fixture_->dismissMessage();
    }

    void pipesAndLinksAreRenamedAsTheyAre()
    {
        fixture_->write(1, {"file"});
        fixture_->files().makeFifo("left/pipe");
        fixture_->files().makeLink("left/link", "file");
        fixture_->files().makeLink("left/dangling", "nowhere");
        fixture_->start();
        for (const char* name : {"pipe", "link", "dangling"})
            rename(name, typing(QLatin1String("new ") + name));
        QVERIFY(isFifo(fixture_->left("new pipe")));
        QVERIFY(QFileInfo(fixture_->left("new link")).isSymLink());
        QVERIFY(QFileInfo(fixture_->left("new dangling")).isSymLink());
        QCOMPARE(fixture_->files().read("left/file"), QByteArray("file"));
        QCOMPARE(fixture_->program().rows(1).size(), 5);
    }

    void oddNamesCanBeTyped_data() { addTypedNames(); }
    void oddNamesCanBeTyped()
    {
        QFETCH(QString, name);
        fixture_->write(1, {"a"});
        fixture_->start();
        rename("a", typing(name));
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", name}));
        QCOMPARE(fixture_->files().read("left/" + name), QByteArray("a"));
    }

    void entriesWithOddNamesAreRenamed_data() { addOddNames(); }
    void entriesWithOddNamesAreRenamed()
    {
        QFETCH(QString, name);
        fixture_->write(1, {name});
        fixture_->start();
        rename(name, typing("plain"));
        QCOMPARE(log().first(), dialog(name));
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "plain"}));
        QCOMPARE(fixture_->files().read("left/plain"), name.toUtf8());
    }

    void pastedZeroDoesNotCutTheName_data()
    {
        QTest::addColumn<QString>("before");
        QTest::newRow("to one that is taken") << "b";
        QTest::newRow("to one that is free") << "z";
    }

    void pastedZeroDoesNotCutTheName()
    {
        QFETCH(QString, before);
        fixture_->write(1, {"a", "b"});
        fixture_->start();
        rename("a", [this, before] {
            QGuiApplication::clipboard()->setText(before + QChar(0) + 'c');
            fixture_->window()->textInput->Paste();
            yes();
        });
        QCOMPARE(log().first(), dialog("a"));
        fixture_->dismissMessage();
        QCOMPARE(fixture_->files().read("left/a"), QByteArray("a"));
        QCOMPARE(fixture_->files().read("left/b"), QByteArray("b"));
        QVERIFY(!QFile::exists(fixture_->left("z")));
    }

    void currentEntryIsRenamedInMultiSelectionToo()
    {
        fixture_->write(1, {"a", "b"});
        fixture_->start();
        fixture_->mark({"a"});
        rename("b", typing("c"));
        QVERIFY(QFile::exists(fixture_->left("c")) && QFile::exists(fixture_->left("a")));
        QVERIFY(fixture_->window()->getActiveMultiStat());
    }

    void nothingIsRenamedWithoutAnEntry_data()
    {
        QTest::addColumn<int>("page");
        QTest::newRow("on the about page") << int(FM::AboutPage);
        QTest::newRow("without a current entry") << int(FM::Panel1);
    }

    void nothingIsRenamedWithoutAnEntry()
    {
        QFETCH(int, page);
        fixture_->write(1, {"a"});
        fixture_->start();
        if (page == FM::Panel1)
            fixture_->panel(1)->curFile.clear();
        fixture_->goTo(page);
        fixture_->window()->slot_Rename();
        QCOMPARE(log(), QStringList());
        QVERIFY(!textView->isUp() && !fixture_->window()->textInput->isVisible());
    }

private:
    void rename(const QString& name, const CommandLog::Action& user)
    {
        fixture_->log().take();
        fixture_->highlight(name);
        fixture_->log().expect({user});
        Fixture::choose(Fixture::Rename);
    }
};

int main(int argc, char** argv)
{
    enterOwnMounts();
    return runTest<tst_Rename>(argc, argv);
}
#include "tst_rename.moc"
