#include "browser/filebrowserftab.h"
#include "files/paths.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "tests/fileops/commandfixture.h"
#include "tests/fileops/filemodel.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <QFile>

#include <memory>
#include <random>
#include <utility>

using Fixture = CommandFixture;
using Log = CommandLog;

namespace
{

/// Someone who gives commands at random, all by keys, and knows what must become of the files, what
/// is asked and told, and what the panels show. Each step checks all of it.
class RandomUser
{
public:
    explicit RandomUser(unsigned seed) : random_(seed)
    {
        fixture_.log().setShell(Log::quietShell);
        for (const int page : {1, 2}) {
            folder_[page] = fixture_.folder(page);
            model_.makeFolder(folder_[page]);
        }
        top_ = fixture_.files().path();
        fixture_.start();
        showBoth();
    }

    /// What the last step was.
    const QString& what() const { return what_; }

    void step()
    {
        using Step = void (RandomUser::*)();
        static constexpr Step Steps[] = {
            &RandomUser::writeFile,      &RandomUser::writeFile,  &RandomUser::enterFolder,
            &RandomUser::goUp,           &RandomUser::changePage, &RandomUser::makeFolder,
            &RandomUser::makeFolder,     &RandomUser::rename,     &RandomUser::rename,
            &RandomUser::deleteSome,     &RandomUser::copySome,   &RandomUser::copySome,
            &RandomUser::copySome,       &RandomUser::moveSome,   &RandomUser::moveSome,
            &RandomUser::showProperties,
        };
        constexpr int Most = 60;
        if (model_.count() > Most)
            deleteSome();
        else
            (this->*Steps[below(int(std::size(Steps)))])();
        if (!QTest::currentTestFailed())
            check();
    }

private:
    // Chance.

    int below(int count) { return int(random_() % unsigned(count)); }
    bool mostly() { return below(4) > 0; }

    QString name()
    {
        static const QStringList names{"a",    "b",    QString::fromUtf8("\u00fc %1 %%"),
                                       ".hid", "it's", " c d "};
        return names.at(below(int(names.size())));
    }

    /// What someone may type for a name; sometimes with a folder, sometimes nothing.
    QString typedName()
    {
        const int kind = below(8);
        return kind == 0 ? QString() : kind == 1 ? name() + '/' + name() : name();
    }

    // What is there.

    int page() const { return fixture_.window()->activePage(); }
    QString here() const { return folder_[page()]; }
    QString pathOf(const QString& entry) const { return here() + '/' + entry; }

    void show(int page) { shown_[page] = model_.rows(folder_[page]); }
    void showBoth()
    {
        show(1);
        show(2);
    }

    /// Whether a panel would lose the folder that it shows.
    bool holdsPanel(const QString& path) const
    {
        return (folder_[1] + '/').startsWith(path + '/') ||
               (folder_[2] + '/').startsWith(path + '/');
    }

    // What the user expects to be asked, and does then.

    void expect(const QString& line) { expected_.append(line); }

    /// A question that is answered at random, or no if it must be.
    bool answersYes(const QString& line, bool allowed = true)
    {
        const bool answer = allowed && mostly();
        expect(line);
        fixture_.log().expect({answer ? yes : no});
        return answer;
    }

    void expectMessage(const QString& line)
    {
        expect(line);
        messageIsUp_ = true;
    }
    void expectError(const QString& text)
    {
        expectMessage(Log::message(LANG_ERROR, text, "error"));
    }

    /// A dialog for a name. False if it is cancelled, which it is if it must be.
    bool confirms(const QString& line, const QString& text, bool allowed)
    {
        const bool confirmed = allowed && mostly();
        expect(line);
        if (confirmed)
            fixture_.log().expect({typing(text)});
        else
            fixture_.log().expect({no});
        return confirmed;
    }

    // The steps.

    /// Another program makes a file; the panels show it after they are listed anew.
    void writeFile()
    {
        const QString path = pathOf(name());
        what_ = "write " + path;
        if (!model_.exists(path)) {
            const QByteArray content = QByteArray::number(++written_);
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
            model_.write(path, content);
        }
        pressKey('#');
        showBoth();
    }

    void goToRow(int row) const
    {
        const FileBrowserFtab* panel = fixture_.panel(page());
        while (panel->curIndex != row)
            pressKey(panel->curIndex < row ? PhoneKey::Down : PhoneKey::Up);
    }

    /// The name in a row that has been made current, by chance; the way back is row 0.
    QString goToAny(bool wayBackToo = false)
    {
        const qsizetype rows = shown_[page()].size();
        const int first = wayBackToo ? 0 : 1;
        if (rows <= first)
            return {};
        const int row = first + below(int(rows) - first);
        goToRow(row);
        return shown_[page()].at(row);
    }

    void enterFolder()
    {
        const QString entry = goToAny();
        what_ = "enter " + entry;
        // Anything else would be opened.
        if (entry.isEmpty() || !model_.isFolder(pathOf(entry)))
            return;
        folder_[page()] = pathOf(entry);
        pressKey(PhoneKey::Return);
        show(page());
    }

    void goUp()
    {
        what_ = "go up";
        if (here() == fixture_.folder(page()))
            return;
        folder_[page()] = here().left(here().lastIndexOf('/'));
        pressKey(PhoneKey::FolderUp);
        show(page());
    }

    void changePage()
    {
        what_ = "change the page";
        fixture_.goTo(3 - page());
    }

    void makeFolder()
    {
        const QString text = typedName();
        const QString path = pathOf(text);
        what_ = "make " + path;
        const bool confirmed =
            confirms(Log::dialog(LANG_MKDIR, LANG_ENTER_DIRNAME, "mkdir", {}), text, true);
        Fixture::choose(Fixture::MakeFolder);
        if (!confirmed || text.isEmpty())
            return;
        if (model_.exists(path) || !model_.isFolder(path.left(path.lastIndexOf('/'))))
            return expectError(LANG_RENAME_DIREXISTS);
        model_.makeFolder(path);
        show(page());
    }

    void rename()
    {
        const QString entry = goToAny(true);
        const QString text = typedName();
        const QString path = pathOf(text);
        what_ = "rename " + pathOf(entry) + " to " + text;
        const QString prompt = LANG_RENAME + " \"" + entry + "\":";
        const bool wayBack = entry == "..";
        const bool confirmed = confirms(Log::dialog(LANG_RENAME, prompt, "rename", entry), text,
                                        !holdsPanel(pathOf(entry)));
        Fixture::choose(Fixture::Rename);
        if (!confirmed)
            return;
        if (model_.exists(path))
            return expectError(LANG_RENAME_EXISTS);
        if (wayBack || !model_.rename(pathOf(entry), path))
            return expectError(LANG_RENAME_ERROR);
        showBoth();
    }

    /// Makes an entry current, or marks several. Paths.
    QStringList chooseSome()
    {
        if (below(3) > 0) {
            const QString entry = goToAny();
            return entry.isEmpty() ? QStringList() : QStringList{pathOf(entry)};
        }
        pressKey('0');
        show(page());
        QStringList paths;
        for (int row = 1; row < shown_[page()].size(); ++row) {
            if (below(2) == 0)
                continue;
            goToRow(row);
            pressKey(PhoneKey::Return);
            paths.append(pathOf(shown_[page()].at(row)));
        }
        marked_ = true;
        return paths;
    }

    /// A command on marked entries ends the mode and lists the panel.
    void leaveMarking()
    {
        if (std::exchange(marked_, false))
            show(page());
    }

    void deleteSome()
    {
        const QStringList paths = chooseSome();
        what_ = "delete " + paths.join(", ");
        if (paths.isEmpty() && !marked_)
            return;
        bool deleted = false;
        for (const QString& path : paths) {
            // What has gone meanwhile is passed over.
            if (!model_.exists(path))
                continue;
            const QString title = model_.isFolder(path) ? LANG_DELETE_DIR : LANG_DELETE_FILE;
            if (answersYes(Log::question(title, path, "delete"), !holdsPanel(path))) {
                model_.remove(path);
                deleted = true;
            }
        }
        Fixture::choose(Fixture::Delete);
        leaveMarking();
        if (deleted)
            show(page());
    }

    void copySome() { put(Fixture::Copy); }
    void moveSome() { put(Fixture::Move); }

    /// Copies or moves, into the folder that a panel shows then.
    void put(Fixture::CopyItem command)
    {
        const QStringList paths = chooseSome();
        if (paths.isEmpty() && !marked_)
            return;
        Fixture::choose(command);
        leaveMarking();
        if (mostly())
            changePage();
        if (below(3) == 0)
            enterFolder();
        what_ = (command == Fixture::Copy ? "copy " : "move ") + paths.join(", ") + " to " + here();
        for (const QString& path : paths) {
            // What cp makes of this is its own affair.
            if (command == Fixture::Copy && here().startsWith(path + '/'))
                return;
        }
        const bool builtIn = command == Fixture::Copy && below(2) == 0;
        for (const QString& path : paths) {
            // The boxes of an entry take the place of a message about the one before.
            messageIsUp_ = false;
            command == Fixture::Copy ? expectCopy(path, builtIn) : expectMove(path);
        }
        if (builtIn)
            holdKey(PhoneKey::Modifier);
        Fixture::choose(Fixture::Paste);
        if (builtIn)
            releaseKey(PhoneKey::Modifier);
        if (!paths.isEmpty())
            showBoth();
    }

    /// Asks to replace what is in the way, if something is. False if it stays.
    bool makesRoom(const QString& target)
    {
        if (!model_.exists(target))
            return true;
        if (!answersYes(replaceQuestion(namePart(target)), !holdsPanel(target)))
            return false;
        model_.remove(target);
        return true;
    }

    void expectCopy(const QString& path, bool builtIn)
    {
        if (path == here())
            return expectError(LANG_DON_TRY_COPY);
        if (!makesRoom(pathOf(namePart(path))))
            return;
        builtIn ? model_.copyBuiltIn(path, here()) : model_.copy(path, here());
    }

    void expectMove(const QString& path)
    {
        if (path == here())
            return expectError(LANG_DON_TRY_MOVE);
        const QString name = namePart(path);
        if (answersYes(Log::question(LANG_MOVE_SURE, name + " to " + here(), "warning")) &&
            makesRoom(pathOf(name)))
            model_.rename(path, pathOf(name));
    }

    void showProperties()
    {
        const QString entry = goToAny(true);
        what_ = "properties of " + pathOf(entry);
        Fixture::choose(Fixture::Properties);
        if (entry == "..")
            return;
        QVERIFY(textView->isUp());
        QCOMPARE(textView->shownTitle(), LANG_PROPERTIES);
        QVERIFY(textView->shownText().contains(' ' + LANG_NAME + ": " + entry));
        expectMessage(Log::message(LANG_PROPERTIES, textView->shownText(), "props") + " | align 1");
    }

    void check()
    {
        QStringList told = fixture_.log().take();
        told.removeIf([](const QString& line) {
            return !line.startsWith("question") && !line.startsWith("message") &&
                   !line.startsWith("dialog");
        });
        QCOMPARE(told, expected_);
        QCOMPARE(fixture_.log().unused(), 0);
        QCOMPARE(FileModel::linesOnDisk(top_), model_.lines(top_));
        for (const int page : {1, 2})
            QCOMPARE(fixture_.program().rows(page), shown_[page]);
        expected_.clear();
        QCOMPARE(textView->isUp(), messageIsUp_);
        if (std::exchange(messageIsUp_, false)) {
            QVERIFY(QTest::qWaitFor([] { return keyReceiver() == textView; }));
            fixture_.dismissMessage();
        }
        QCOMPARE(keyReceiver(), fixture_.panel(page()));
    }

    std::mt19937 random_;
    CommandFixture fixture_;
    FileModel model_;
    QString top_;
    QString folder_[3];    ///< that a panel shows, by its page
    QStringList shown_[3]; ///< its rows as they were listed last
    QStringList expected_;
    QString what_;
    bool messageIsUp_ = false; ///< after the step
    bool marked_ = false;
    int written_ = 0;
};

} // namespace

/// Thousands of commands at random. QUARN_SEED (a number) plays another game than the usual ones,
/// QUARN_STEPS is the length of a game.
class tst_Random : public QObject
{
    Q_OBJECT

private slots:
    void filesArePanelsShowAndBoxesSayWhatTheyMust_data()
    {
        QTest::addColumn<unsigned>("seed");
        if (qEnvironmentVariableIsSet("QUARN_SEED")) {
            const auto seed = unsigned(qEnvironmentVariableIntValue("QUARN_SEED"));
            QTest::addRow("seed %u", seed) << seed;
            return;
        }
        for (unsigned seed = 1; seed <= 4; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }

    void filesArePanelsShowAndBoxesSayWhatTheyMust()
    {
        QFETCH(unsigned, seed);
        constexpr int UsualSteps = 500;
        bool given = false;
        const int wanted = qEnvironmentVariableIntValue("QUARN_STEPS", &given);
        RandomUser user(seed);
        for (int step = 1; step <= (given ? wanted : UsualSteps); ++step) {
            user.step();
            if (QTest::currentTestFailed()) {
                qWarning("QUARN_SEED=%u, step %d: %s", seed, step, qPrintable(user.what()));
                return;
            }
        }
    }
};

QUARN_TEST_MAIN(tst_Random)

#include "tst_random.moc"
