#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "tests/fileops/twinfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <memory>

// Entries with odd names are copied and moved, and nothing else is touched.

namespace
{

using Fixture = CommandFixture;
using Names = QList<QByteArray>;

/// Adds a column "form" to the kinds of odd names.
void addKindsAndForms(std::initializer_list<TwinFixture::Form> forms)
{
    const char* const titles[] = {"files", "folders", "links to twins", "links to a folder"};
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("form");
    for (const TwinFixture::Form form : forms)
        for (int kind = 0; kind < oddKinds().size(); ++kind)
            QTest::addRow("%s: %s", titles[form], oddKinds().at(kind).title) << kind << int(form);
}

constexpr std::initializer_list<TwinFixture::Form> AllForms = {
    TwinFixture::Files, TwinFixture::Folders, TwinFixture::Links, TwinFixture::FolderLinks};

} // namespace

class tst_TwinCopies : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { twins_.reset(); }

    void shellCopiesTheEntriesAlone_data()
    {
        addKindsAndForms({TwinFixture::Files, TwinFixture::Folders, TwinFixture::Links});
    }

    void shellCopiesTheEntriesAlone()
    {
        begin();
        twins_->leaveOutWhatTheShellChanges();
        twins_->onMany([this](const Names& names) { paste(names, Fixture::Copy); },
                       [this](ByteTree& tree, const Names& names) {
                           for (const QByteArray& name : names)
                               tree.copy("left/" + name, "right/" + name);
                           expectQuestionsAndNoMessage(0);
                       });
        twins_->verify();
    }

    void builtInCopyCopiesTheEntriesAlone_data() { addKindsAndForms(AllForms); }
    void builtInCopyCopiesTheEntriesAlone()
    {
        begin();
        twins_->onMany(
            [this](const Names& names) {
                highlightFor(names, Fixture::Copy);
                holdKey(PhoneKey::Modifier);
                Fixture::choose(Fixture::Paste);
                releaseKey(PhoneKey::Modifier);
                twins_->program().goTo(1);
            },
            [this](ByteTree& tree, const Names& names) {
                for (const QByteArray& name : names)
                    addBuiltInCopy(tree, name);
                expectQuestionsAndNoMessage(0);
            });
        twins_->verify();
    }

    void entriesArePastedIntoTheOddFolder_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<bool>("builtIn");
        for (const bool builtIn : {false, true})
            for (int kind = 0; kind < oddKinds().size(); ++kind)
                QTest::addRow("%s: %s", builtIn ? "built-in" : "shell", oddKinds().at(kind).title)
                    << kind << builtIn;
    }

    void entriesArePastedIntoTheOddFolder()
    {
        QFETCH(int, kind);
        QFETCH(bool, builtIn);
        twins_ = std::make_unique<TwinFixture>(namesForEach(kind), TwinFixture::Folders);
        twins_->leaveOutWhatTheShellChanges();
        twins_->start();
        twins_->onEach(
            [this, builtIn](const QByteArray& name) {
                pressKey(PhoneKey::FolderUp);
                twins_->program().toClipboard(Fixture::Copy, "file", 2);
                pasteInto(name, builtIn);
                twins_->program().panel(1)->setDir(twins_->program().left(), 0);
                twins_->program().goTo(1);
            },
            [this](ByteTree& tree, const QByteArray& name) {
                tree.copy("file", "left/" + name + "/file");
                expectQuestionsAndNoMessage(0);
            });
        twins_->verify();
    }

    void entriesInTheWayAloneAreReplaced_data() { addKindsAndForms({TwinFixture::Files}); }
    void entriesInTheWayAloneAreReplaced()
    {
        begin();
        twins_->leaveOutWhatTheShellChanges();
        twins_->onMany(
            [this](const Names& names) {
                answerYes(names);
                paste(names, Fixture::Copy);
            },
            [this](ByteTree& tree, const Names& names) {
                for (const QByteArray& name : names) {
                    tree.remove("right/" + name);
                    tree.copy("left/" + name, "right/" + name);
                }
                expectQuestionsAndNoMessage(names.size());
            },
            [this](const Names& names) {
                for (const QByteArray& name : names)
                    writeFile(twins_->right(name), "in the way");
            });
        twins_->verify();
    }

    void movingTakesTheEntriesAlone_data()
    {
        addKindsAndForms({TwinFixture::Files, TwinFixture::Folders});
    }

    void movingTakesTheEntriesAlone()
    {
        begin();
        twins_->leaveOutWhatTheShellChanges();
        twins_->onMany(
            [this](const Names& names) {
                answerYes(names);
                paste(names, Fixture::Move);
            },
            [this](ByteTree& tree, const Names& names) {
                for (const QByteArray& name : names)
                    tree.move("left/" + name, "right/" + name);
                expectQuestionsAndNoMessage(names.size());
            });
        twins_->verify();
    }

    void moverGetsTheBytes_data() { addKindsAndForms({TwinFixture::Files}); }
    void moverGetsTheBytes()
    {
        begin();
        twins_->leaveOutWhatTheShellChanges();
        twins_->program().installMover();
        QByteArrayList moved;
        twins_->program().log().setShell([this, &moved](const QByteArray& command) {
            const int status = systemShell(command);
            const QByteArrayList arguments = twins_->program().moverArguments();
            twins_->expect(arguments.value(2) == twins_->right(), "moved to another folder");
            moved.append(arguments.value(1));
            return status;
        });
        twins_->onMany(
            [this](const Names& names) {
                answerYes(names);
                paste(names, Fixture::Move);
            },
            [this, &moved](ByteTree&, const Names& names) {
                QByteArrayList expected;
                for (const QByteArray& name : names)
                    expected.append(twins_->left(name));
                twins_->expect(moved == expected, "the mover got others");
                moved.clear();
            });
        twins_->verify();
    }

private:
    void begin()
    {
        QFETCH(int, kind);
        QFETCH(int, form);
        form_ = TwinFixture::Form(form);
        const QList<QByteArray>& names =
            form_ == TwinFixture::Files ? namesForEach(kind) : thinnedOddKinds().at(kind).names;
        twins_ = std::make_unique<TwinFixture>(names, form_, true);
        twins_->start();
    }

    /// Pastes into a folder of the left folder, in the right panel.
    void pasteInto(const QByteArray& name, bool builtIn)
    {
        twins_->program().panel(2)->setDir(twins_->program().left(), 0);
        twins_->highlight(twins_->left(), name);
        pressKey(PhoneKey::Return);
        if (builtIn)
            holdKey(PhoneKey::Modifier);
        Fixture::choose(Fixture::Paste);
        if (builtIn)
            releaseKey(PhoneKey::Modifier);
    }

    void answerYes(const Names& names)
    {
        for (qsizetype i = 0; i < names.size(); ++i)
            twins_->program().log().expect({yes});
    }

    /// The built-in copy takes plain files alone, and makes folders only for them.
    void addBuiltInCopy(ByteTree& tree, const QByteArray& name) const
    {
        const QByteArray copy = "right/" + name;
        if (form_ == TwinFixture::Files || form_ == TwinFixture::Links) {
            tree.addFile(copy, twins_->contentBehind(name));
        } else if (form_ == TwinFixture::FolderLinks) {
            tree.addFolder(copy);
            tree.addFile(copy + "/in", twins_->contentBehind(name));
        } else {
            tree.copy("left/" + name, copy);
            for (const QByteArray& each : namesIn(twins_->left(name)))
                if (each.startsWith('.'))
                    tree.remove(copy + '/' + each);
            if (name.startsWith('.'))
                tree.remove(copy + "/folder");
        }
    }

    void expectQuestionsAndNoMessage(qsizetype questions)
    {
        twins_->expect(twins_->noted("question") == questions, "another number of questions");
        twins_->expect(twins_->noted("message") == 0, "a message");
        twins_->program().log().forget();
    }

    /// Takes entries to the clipboard and shows the right panel.
    void highlightFor(const Names& names, Fixture::CopyItem item)
    {
        twins_->mark(names);
        Fixture::choose(item);
        twins_->program().goTo(2);
    }

    void paste(const Names& names, Fixture::CopyItem item)
    {
        highlightFor(names, item);
        Fixture::choose(Fixture::Paste);
        twins_->program().goTo(1);
    }

    std::unique_ptr<TwinFixture> twins_;
    TwinFixture::Form form_ = TwinFixture::Files;
};

QUARN_TEST_MAIN(tst_TwinCopies)
#include "tst_twincopies.moc"
