#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "tests/fileops/twinfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"
#include "widgets/textinput.h"

#include <QClipboard>
#include <QGuiApplication>

#include <memory>

// Names that are shown in the field, typed and pasted.

namespace
{

using Fixture = CommandFixture;

const QByteArray Added = ".added";

} // namespace

class tst_TwinNames : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { twins_.reset(); }

    void renamingTakesTheEntryAlone_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("form");
        for (const auto form : {TwinFixture::Files, TwinFixture::Folders, TwinFixture::Links})
            for (int kind = 0; kind < oddKinds().size(); ++kind)
                QTest::addRow("%d %s", int(form), oddKinds().at(kind).title) << kind << int(form);
    }

    void renamingTakesTheEntryAlone()
    {
        QFETCH(int, form);
        if (form == TwinFixture::Files)
            begin(TwinFixture::Files);
        else
            beginThinned(TwinFixture::Form(form));
        twins_->onEach(
            [this](const QByteArray& name) { rename(name, typing("to " + number(name))); },
            [this](ByteTree& tree, const QByteArray& name) {
                tree.move("left/" + name, "left/to " + number(name).toUtf8());
                twins_->expect(twins_->noted("message") == 0, "a message");
            });
        twins_->verify();
    }

    void confirmedAsItIsTheNameIsTaken_data() { addOddKinds(); }
    void confirmedAsItIsTheNameIsTaken()
    {
        begin(TwinFixture::Files);
        twins_->onEach([this](const QByteArray& name) { rename(name, yes); },
                       [this](ByteTree&, const QByteArray&) { expectMessage(LANG_RENAME_EXISTS); });
        twins_->verify();
    }

    void addedTextGoesBehindTheSameBytes_data() { addOddKinds(); }
    void addedTextGoesBehindTheSameBytes()
    {
        begin(TwinFixture::Files);
        twins_->onEach(
            [this](const QByteArray& name) {
                rename(name, [] {
                    pressKey(PhoneKey::Right);
                    typeText(QString::fromLatin1(Added));
                    yes();
                });
            },
            [this](ByteTree& tree, const QByteArray& name) {
                if (name.size() + Added.size() <= 255)
                    tree.move("left/" + name, "left/" + name + Added);
                else
                    expectMessage(LANG_RENAME_ERROR);
            });
        twins_->verify();
    }

    void nameCopiedFromTheFieldIsPastedAsItIs_data() { addOddKinds(); }
    void nameCopiedFromTheFieldIsPastedAsItIs()
    {
        begin(TwinFixture::Files, true);
        twins_->leaveOutSeveralLines();
        twins_->onEach(
            [this](const QByteArray& name) {
                rename(name, [this] {
                    input()->Copy();
                    no();
                });
                twins_->program().goTo(2);
                makeFolderBy([this] { input()->Paste(); });
                twins_->program().goTo(1);
            },
            [this](ByteTree& tree, const QByteArray& name) { tree.addFolder("right/" + name); });
        twins_->verify();
    }

    void newFolderIsMadeInTheOddFolder_data() { addOddKinds(); }
    void newFolderIsMadeInTheOddFolder()
    {
        begin(TwinFixture::Folders);
        twins_->onEach(
            [this](const QByteArray& name) {
                twins_->highlight(twins_->left(), name);
                pressKey(PhoneKey::Return);
                makeFolderBy([] { typeText(QStringLiteral("new")); });
                const bool listed =
                    twins_->program().panel(1)->count() == rowsOf(twins_->left(name)).size();
                twins_->expect(listed, "the folder is not listed anew");
                pressKey(PhoneKey::FolderUp);
            },
            [](ByteTree& tree, const QByteArray& name) {
                tree.addFolder("left/" + name + "/new");
            });
        twins_->verify();
    }

    void pastedTextThatStandsForNoNameIsRefused_data()
    {
        QTest::addColumn<QString>("text");
        const std::pair<const char*, QString> texts[] = {
            {"an ASCII letter as a byte", QString(QChar(0xdc41))},
            {"a slash as a byte", 'a' + QString(QChar(0xdc2f)) + 'b'},
            {"a zero as a byte", 'a' + QString(QChar(0xdc00))},
            {"the last that is no byte", QString(QChar(0xdc7f))},
            {"behind the bytes", QString(QChar(0xdd00))},
            {"the last surrogate", QString(QChar(0xdfff))},
            {"half of a character", QString(QChar(0xd83d))},
            {"half of a character before a mark", QString(QChar(0xd83d)) + QChar(0xfeff)},
            {"half of a character inside", 'a' + QString(QChar(0xd800)) + 'b'},
            {"zero", 'a' + QString(QChar(0)) + 'b'}};
        for (const auto& [title, text] : texts)
            QTest::newRow(title) << text;
    }

    void pastedTextThatStandsForNoNameIsRefused()
    {
        QFETCH(QString, text);
        beginWith({"plain"}, {"A", "a", "b", "ab", "?", "a?", "a?b", "\xef\xbf\xbd", "\x41", "\x7f",
                              "\xff", "\xed\xb1\x81", "a\xef\xbf\xbd",
                              "a\xef\xbf\xbd"
                              "b"});
        const ByteTree before = tree();
        renameTo(text);
        expectRefused(before, LANG_RENAME_ERROR);
        makeFolderBy([text] { paste(text); });
        expectRefused(before, LANG_RENAME_DIREXISTS);
    }

    void pastedBytesThatTogetherAreTextDoNotTakeItsPlace()
    {
        beginWith({"plain"}, {"\xc3\xa9", "a"});
        const ByteTree before = tree();
        renameTo(QString(QChar(0xdcc3)) + QChar(0xdca9));
        QCOMPARE(before.differences(tree()).join('\n'), QString());
        QVERIFY(textView->isUp());
        twins_->dismissMessages();
    }

    void pastedTextIsTheNameToTheByte_data()
    {
        QTest::addColumn<QByteArray>("name");
        const std::pair<const char*, QByteArray> names[] = {
            {"replacement character", "\xef\xbf\xbd"},
            {"question mark", "?"},
            {"mark alone", "\xef\xbb\xbf"},
            {"mark before", "\xef\xbb\xbf"
                            "b"},
            {"mark twice", "\xef\xbb\xbf\xef\xbb\xbf"},
            {"mark at the end", "b\xef\xbb\xbf"},
            {"blanks", " b "},
            {"tab", "a\tb"},
            {"composed", "\xc3\xa9"},
            {"decomposed", "e\xcc\x81"},
            {"angstrom", "\xe2\x84\xab"},
            {"no-break blank", "\xc2\xa0"},
            {"line separator", "a\xe2\x80\xa8"
                               "b"},
            {"direction mark", "a\xe2\x80\xae"
                               "b"},
            {"zero width", "\xe2\x80\x8b"},
            {"no character", "\xef\xbf\xbe"},
            {"beyond 16 bits", "\xf0\x9f\x98\x80"},
            {"a lone byte", "\x80"},
            {"a lone byte behind an emoji", "\xf0\x9f\x98\x80\x80"},
            {"cut emoji", "\xf0\x9f\x98"},
            {"encoded surrogate", "\xed\xb2\x80"}};
        for (const auto& [title, name] : names)
            QTest::newRow(title) << name;
    }

    void pastedTextIsTheNameToTheByte()
    {
        QFETCH(QByteArray, name);
        beginWith({"plain"}, twinsOf(name));
        ByteTree expected = tree();
        renameTo(textOf(name));
        expected.move("left/plain", "left/" + name);
        QCOMPARE(expected.differences(tree()).join('\n'), QString());
        QVERIFY(!textView->isUp());
        twins_->program().goTo(2);
        makeFolderBy([name] { paste(textOf(name)); });
        expected.addFolder("right/" + name);
        QCOMPARE(expected.differences(tree()).join('\n'), QString());
        QVERIFY(!textView->isUp());
    }

    void typedTextIsTheNameToTheByte_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const QByteArray& name :
             {QByteArray("e\xcc\x81"), QByteArray("\xc3\xa9"), QByteArray("\xef\xbf\xbd"),
              QByteArray(" "), QByteArray("\xf0\x9f\x98\x80")})
            QTest::addRow("%s", qPrintable(shown(name))) << name;
    }

    void typedTextIsTheNameToTheByte()
    {
        QFETCH(QByteArray, name);
        beginWith({"plain"}, twinsOf(name));
        ByteTree expected = tree();
        rename("plain", [name] {
            // As an input method sends it: all at once.
            QKeyEvent typed(QEvent::KeyPress, 0, Qt::NoModifier, QString::fromUtf8(name));
            QCoreApplication::sendEvent(keyReceiver(), &typed);
            yes();
        });
        expected.move("left/plain", "left/" + name);
        QCOMPARE(expected.differences(tree()).join('\n'), QString());
    }

private:
    TextInput* input() const { return twins_->program().window()->textInput; }
    ByteTree tree() const { return ByteTree::of(twins_->program().files().path().toLocal8Bit()); }
    QString number(const QByteArray& name) const
    {
        return QString::number(twins_->names().indexOf(name));
    }

    void begin(TwinFixture::Form form, bool twinsRight = false)
    {
        QFETCH(int, kind);
        twins_ = std::make_unique<TwinFixture>(namesForEach(kind), form, twinsRight);
        twins_->start();
    }

    void beginThinned(TwinFixture::Form form)
    {
        QFETCH(int, kind);
        twins_ = std::make_unique<TwinFixture>(thinnedOddKinds().at(kind).names, form);
        twins_->start();
    }

    /// Files of some names in both folders; of the first ones only in the left.
    void beginWith(const QList<QByteArray>& names, const QList<QByteArray>& others)
    {
        twins_ = std::make_unique<TwinFixture>(names, TwinFixture::Files);
        for (const QByteArray& name : others) {
            writeFile(twins_->left(name), "left " + name);
            writeFile(twins_->right(name), "right " + name);
        }
        twins_->start();
    }

    void rename(const QByteArray& name, const CommandLog::Action& user)
    {
        twins_->highlight(twins_->left(), name);
        twins_->program().log().expect({user});
        Fixture::choose(Fixture::Rename);
    }

    static void paste(const QString& text)
    {
        QGuiApplication::clipboard()->setText(text);
        quarn->textInput->Paste();
    }

    void renameTo(const QString& text)
    {
        rename("plain", [text] {
            paste(text);
            yes();
        });
    }

    void makeFolderBy(const CommandLog::Action& enter)
    {
        twins_->program().log().expect({[enter] {
            enter();
            yes();
        }});
        Fixture::choose(Fixture::MakeFolder);
    }

    void expectMessage(const QString& text)
    {
        twins_->expect(textView->isUp() && textView->shownText() == text, "not the message");
    }

    void expectRefused(const ByteTree& before, const QString& message)
    {
        QCOMPARE(before.differences(tree()).join('\n'), QString());
        QVERIFY(textView->isUp());
        QCOMPARE(textView->shownText(), message);
        twins_->dismissMessages();
    }

    std::unique_ptr<TwinFixture> twins_;
};

QUARN_TEST_MAIN(tst_TwinNames)
#include "tst_twinnames.moc"
