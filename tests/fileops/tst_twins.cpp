#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "tests/fileops/twinfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <memory>

// Entries with odd names are listed and deleted, and no others are deleted.

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
            begin(oddKinds().at(kind).names, form);
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
        begin(oddKinds().at(kind).names, TwinFixture::Files);
        ByteTree expected = tree();
        twins_->mark(twins_->names());
        for (const QByteArray& name : twins_->names()) {
            expected.remove("left/" + name);
            answerYes();
        }
        Fixture::choose(Fixture::Delete);
        QCOMPARE(expected.differences(tree()), QStringList());
        QCOMPARE(twins_->program().log().unused(), 0);
    }

    void commandsInAnOddFolderStayInIt_data() { addOddKinds(); }
    void commandsInAnOddFolderStayInIt()
    {
        QFETCH(int, kind);
        begin(namesForEach(kind), TwinFixture::Folders);
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

    void begin(const QList<QByteArray>& names, TwinFixture::Form form)
    {
        twins_ = std::make_unique<TwinFixture>(names, form);
        twins_->start();
    }

    void begin()
    {
        QFETCH(int, kind);
        // Files and links go in one way, folders by the shell.
        const bool all = form() == TwinFixture::Files || form() == TwinFixture::Folders;
        begin(all ? namesForEach(kind) : thinnedOddKinds().at(kind).names, form());
    }

    void answerYes() { twins_->program().log().expect({yes}); }

    void give(Fixture::Option option)
    {
        answerYes();
        Fixture::choose(option);
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

    std::unique_ptr<TwinFixture> twins_;
};

QUARN_TEST_MAIN(tst_Twins)
#include "tst_twins.moc"
