#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "tests/fileops/twinfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <memory>

// Entries with odd names are deleted, copied and moved, and nothing else is.

namespace
{

using Fixture = CommandFixture;

/// Adds a column "form" to the kinds of odd names.
void addKindsAndForms()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("form");
    const std::pair<TwinFixture::Form, const char*> forms[] = {
        {TwinFixture::Files, "files"},
        {TwinFixture::Folders, "folders"},
        {TwinFixture::Links, "links to twins"},
        {TwinFixture::FolderLinks, "links to a folder"}};
    for (const auto& [form, title] : forms)
        for (int kind = 0; kind < oddKinds().size(); ++kind)
            QTest::addRow("%s: %s", title, oddKinds().at(kind).title) << kind << int(form);
}

} // namespace

class tst_Twins : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { twins_.reset(); }

    void rowsShowTheNamesInTheOrderOfTheirBytes_data() { addOddKinds(); }
    void rowsShowTheNamesInTheOrderOfTheirBytes()
    {
        QFETCH(int, kind);
        for (const TwinFixture::Form form : {TwinFixture::Files, TwinFixture::Folders}) {
            begin(kind, form);
            QStringList expected;
            for (const QByteArray& name : rowsOf(twins_->left()))
                expected += textOf(name);
            QCOMPARE(twins_->program().program().rows(1), expected);
            twins_.reset();
        }
    }

    void deletingTakesTheEntryAlone_data() { addKindsAndForms(); }
    void deletingTakesTheEntryAlone()
    {
        begin();
        // Files go without the shell.
        if (form() == TwinFixture::Folders || form() == TwinFixture::FolderLinks)
            twins_->leaveOutWhatTheShellChanges();
        twins_->onEach(
            [this](const QByteArray& name) {
                twins_->highlight(twins_->left(), name);
                give(Fixture::Delete);
            },
            [this](ByteTree& tree, const QByteArray& name) {
                tree.remove("left/" + name);
                expectQuestionsAndNoMessage(1);
            });
        twins_->verify();
    }

    void markedEntriesAloneAreDeleted_data() { addOddKinds(); }
    void markedEntriesAloneAreDeleted()
    {
        QFETCH(int, kind);
        begin(kind, TwinFixture::Files);
        const QList<QByteArray> rows = rowsOf(twins_->left());
        ByteTree expected = tree();
        pressKey('0');
        for (const QByteArray& name : twins_->names()) {
            panel(1)->setCurrentItem(int(rows.indexOf(name)));
            pressKey(PhoneKey::Return);
            expected.remove("left/" + name);
            answerYes();
        }
        Fixture::choose(Fixture::Delete);
        QCOMPARE(expected.differences(tree()), QStringList());
        QCOMPARE(twins_->program().log().unused(), 0);
    }

    void shellCopiesTheEntryAlone_data() { addKindsAndForms(); }
    void shellCopiesTheEntryAlone()
    {
        begin(true);
        twins_->leaveOutWhatTheShellChanges();
        twins_->onEach([this](const QByteArray& name) { paste(name, Fixture::Copy); },
                       [this](ByteTree& tree, const QByteArray& name) {
                           tree.copy("left/" + name, "right/" + name);
                           expectQuestionsAndNoMessage(0);
                       });
        twins_->verify();
    }

    void builtInCopyCopiesTheEntryAlone_data() { addKindsAndForms(); }
    void builtInCopyCopiesTheEntryAlone()
    {
        begin(true);
        twins_->onEach(
            [this](const QByteArray& name) {
                highlightFor(name, Fixture::Copy);
                holdKey(PhoneKey::Modifier);
                Fixture::choose(Fixture::Paste);
                releaseKey(PhoneKey::Modifier);
                twins_->program().goTo(1);
            },
            [this](ByteTree& tree, const QByteArray& name) {
                addBuiltInCopy(tree, name);
                expectQuestionsAndNoMessage(0);
            });
        twins_->verify();
    }

    void entryInTheWayAloneIsReplaced_data() { addKindsAndForms(); }
    void entryInTheWayAloneIsReplaced()
    {
        begin(true);
        twins_->leaveOutWhatTheShellChanges();
        twins_->onEach(
            [this](const QByteArray& name) {
                answerYes();
                paste(name, Fixture::Copy);
            },
            [this](ByteTree& tree, const QByteArray& name) {
                tree.remove("right/" + name);
                tree.copy("left/" + name, "right/" + name);
                expectQuestionsAndNoMessage(1);
            },
            [this](const QByteArray& name) { writeFile(twins_->right(name), "in the way"); });
        twins_->verify();
    }

    void movingTakesTheEntryAlone_data() { addKindsAndForms(); }
    void movingTakesTheEntryAlone()
    {
        begin(true);
        twins_->leaveOutWhatTheShellChanges();
        twins_->onEach(
            [this](const QByteArray& name) {
                answerYes();
                paste(name, Fixture::Move);
            },
            [this](ByteTree& tree, const QByteArray& name) {
                tree.move("left/" + name, "right/" + name);
                expectQuestionsAndNoMessage(1);
            });
        twins_->verify();
    }

    void moverGetsTheBytes_data() { addOddKinds(); }
    void moverGetsTheBytes()
    {
        QFETCH(int, kind);
        begin(kind, TwinFixture::Files);
        twins_->leaveOutWhatTheShellChanges();
        twins_->program().installMover();
        twins_->onEach(
            [this](const QByteArray& name) {
                answerYes();
                paste(name, Fixture::Move);
                const QByteArrayList arguments = twins_->program().moverArguments();
                twins_->expect(arguments.value(1) == twins_->left(name), "the mover got another");
                twins_->expect(arguments.value(2) == twins_->right(), "moved to another folder");
            },
            [](ByteTree&, const QByteArray&) {});
        twins_->verify();
    }

    void commandsInAnOddFolderStayInIt_data() { addOddKinds(); }
    void commandsInAnOddFolderStayInIt()
    {
        QFETCH(int, kind);
        begin(kind, TwinFixture::Folders);
        twins_->leaveOutWhatTheShellChanges();
        twins_->onEach([this](const QByteArray& name) { copyAndDeleteInside(name); },
                       [](ByteTree& tree, const QByteArray& name) {
                           const QByteArray folder = "left/" + name;
                           tree.copy(folder + '/' + name, "right/" + name);
                           tree.remove(folder + '/' + name);
                       });
        twins_->verify();
    }

private:
    FileBrowserFtab* panel(int page) const { return twins_->program().panel(page); }
    ByteTree tree() const { return ByteTree::of(twins_->program().files().path().toLocal8Bit()); }

    static TwinFixture::Form form()
    {
        QFETCH(int, form);
        return TwinFixture::Form(form);
    }

    void begin(int kind, TwinFixture::Form form, bool twinsRight = false)
    {
        twins_ = std::make_unique<TwinFixture>(oddKinds().at(kind).names, form, twinsRight);
        twins_->start();
    }

    void begin(bool twinsRight = false)
    {
        QFETCH(int, kind);
        begin(kind, form(), twinsRight);
    }

    void answerYes() { twins_->program().log().expect({yes}); }

    void give(Fixture::Option option)
    {
        answerYes();
        Fixture::choose(option);
    }

    /// The built-in copy takes plain files alone, and makes folders only for them.
    void addBuiltInCopy(ByteTree& tree, const QByteArray& name) const
    {
        const QByteArray copy = "right/" + name;
        if (form() == TwinFixture::Files || form() == TwinFixture::Links) {
            tree.addFile(copy, twins_->contentBehind(name));
            return;
        }
        tree.addFolder(copy);
        tree.addFile(copy + "/in", twins_->contentBehind(name));
        if (form() == TwinFixture::FolderLinks)
            return;
        tree.remove(copy + "/in");
        tree.copy("left/" + name, copy);
        if (!name.startsWith('.'))
            return;
        tree.remove(copy + '/' + name);
        tree.remove(copy + "/folder");
    }

    /// Copies the entry of the same name in a folder to the right, then deletes it, and goes up.
    void copyAndDeleteInside(const QByteArray& name)
    {
        twins_->highlight(twins_->left(), name);
        pressKey(PhoneKey::Return);
        twins_->highlight(twins_->left(name), name);
        Fixture::choose(Fixture::Copy);
        twins_->program().goTo(2);
        Fixture::choose(Fixture::Paste);
        twins_->program().goTo(1);
        give(Fixture::Delete);
        pressKey(PhoneKey::FolderUp);
    }

    void expectQuestionsAndNoMessage(int questions)
    {
        twins_->expect(twins_->noted("question") == questions, "another number of questions");
        twins_->expect(twins_->noted("message") == 0, "a message");
    }

    /// Takes an entry to the clipboard and shows the right panel.
    void highlightFor(const QByteArray& name, Fixture::CopyItem item)
    {
        twins_->highlight(twins_->left(), name);
        Fixture::choose(item);
        twins_->program().goTo(2);
    }

    void paste(const QByteArray& name, Fixture::CopyItem item)
    {
        highlightFor(name, item);
        Fixture::choose(Fixture::Paste);
        twins_->program().goTo(1);
    }

    std::unique_ptr<TwinFixture> twins_;
};

QUARN_TEST_MAIN(tst_Twins)
#include "tst_twins.moc"
