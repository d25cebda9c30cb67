#pragma once

#include "tests/fileops/commandfixture.h"
#include "tests/support/bytefiles.h"
#include "tests/support/oddnames.h"

#include <QSet>

#include <optional>

/// The program on a folder of entries with odd names and of their twins: the entries that they
/// could be mistaken for. A command is given on each odd name; what it changed is compared with
/// what it should have changed.
class TwinFixture
{
public:
    /// Links lead to twins, or, as folder links, to a folder with a file.
    enum Form { Files, Folders, Links, FolderLinks };

    /// `twinsRight`: the twins lie in the right folder too. What the odd names have at their end
    /// keeps names that become too long out.
    TwinFixture(const QList<QByteArray>& names, Form form, bool twinsRight = false,
                const QByteArray& end = QByteArray());
    ~TwinFixture();
    TwinFixture(const TwinFixture&) = delete;
    TwinFixture& operator=(const TwinFixture&) = delete;

    CommandFixture& program() { return fixture_; }
    const QList<QByteArray>& names() const { return names_; }
    /// Leaves out names that the shell changes between double quotes.
    void leaveOutWhatTheShellChanges();
    /// Leaves out names of more than one line: pasted, a break is a blank.
    void leaveOutSeveralLines();
    /// Full paths, and paths as trees have them.
    QByteArray left(const QByteArray& name = QByteArray()) const { return at("left", name); }
    QByteArray right(const QByteArray& name = QByteArray()) const { return at("right", name); }
    /// The content of a file that the fixture made.
    static QByteArray contentOf(const QByteArray& name) { return "this is " + name; }
    /// What is read through a file or link, or from the file "in" of a folder.
    QByteArray contentBehind(const QByteArray& name) const;

    void start();
    /// Makes a row of the shown panel current; notes a failure if the rows are not those of the
    /// folder. Of the left folder they are read once in lookAtEach().
    void highlight(const QByteArray& folder, const QByteArray& name);
    /// Confirms messages until the panel has the keys.
    void dismissMessages();
    /// Lines of the log since the last call that begin so.
    qsizetype noted(const char* kind) const;

    using Command = std::function<void(const QByteArray& name)>;
    using Change = std::function<void(ByteTree& tree, const QByteArray& name)>;
    /// Gives a command on each odd name, the log empty before, and compares. After a difference
    /// everything is made anew. `prepare` comes before what is there is noted. Of many names some
    /// at a time are there, so that each command has a short list to look through.
    void onEach(const Command& command, const Change& change, const Command& prepare = {});
    /// The same for commands that change nothing below the top: what is there is compared after
    /// many.
    void lookAtEach(const Command& command, const Command& check, const Command& prepare = {});
    /// The same with one command on many names, marked, in the order of the rows.
    using ManyCommand = std::function<void(const QList<QByteArray>& names)>;
    using ManyChange = std::function<void(ByteTree& tree, const QList<QByteArray>& names)>;
    void onMany(const ManyCommand& command, const ManyChange& change,
                const ManyCommand& prepare = {});
    /// Marks entries of the shown panel, which shows the left folder.
    void mark(const QList<QByteArray>& names);
    /// Notes what is wrong with the name that the command is given on.
    void fail(const QString& what);
    void expect(bool holds, const char* what);
    /// Fails the test if anything was noted.
    void verify() const;

private:
    QByteArray at(const char* folder, const QByteArray& name) const;
    void setOdd(const QList<QByteArray>& names);
    void make();
    void makeOdd(const QByteArray& name) const;
    void makeAnew();
    /// What a link of an odd name leads to: a twin if it has one.
    QByteArray linkTarget(const QByteArray& name) const;
    void showAnew(const QList<QByteArray>& names);
    /// The tree before is taken over from the last command if there is one.
    void run(const QByteArray& name, const Command& command, const Change& change);
    void finish(const std::function<void(ByteTree& tree)>& change, ByteTree& expected);
    void compare(const ByteTree& expected);

    CommandFixture fixture_;
    QByteArray top_;
    QByteArray end_;
    QList<QByteArray> names_;
    QList<QByteArray> odd_; ///< those of the names that are there now
    QSet<QByteArray> twins_;
    Form form_;
    bool twinsRight_;
    std::optional<ByteTree> now_;
    QList<QByteArray> leftRows_; ///< empty if they may have changed
    QStringList lines_;
    QByteArray current_;
    QStringList failures_;
};
