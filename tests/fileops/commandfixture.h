#pragma once

#include "tests/fileops/commandlog.h"
#include "tests/support/program.h"
#include "widgets/menuitems.h"

/// The program with a log of its commands, and keys to give them. Its panels show the folders
/// "left" and "right" of files(); put there what a test needs, then call start().
class CommandFixture
{
public:
    /// Items of the options menu and of its copy submenu.
    using Option = OptionsItem::Id;
    using enum OptionsItem::Id;
    using CopyItem = ::CopyItem::Id;
    using enum ::CopyItem::Id;

    /// `medium`: where the panels' folders lie.
    explicit CommandFixture(ScratchFolder::Medium medium = ScratchFolder::Disk);

    const ScratchFolder& files() const { return program_.files(); }
    Program& program() { return program_; }
    CommandLog& log() { return log_; }
    /// Full paths in the folders of the panels.
    QString left(const QString& name = QString()) const;
    QString right(const QString& name = QString()) const;
    QString folder(int page) const { return page == 1 ? left() : right(); }
    /// Writes files, with their names as content, into the folder of a panel.
    void write(int page, const QStringList& names) const;

    /// Starts the program and shows a panel; the log begins anew.
    FM* start(int page = 1);
    /// The same with a new file of the first panel on the clipboard and the second panel shown.
    FM* startWith(CopyItem item, const QString& name);
    FM* window() const { return program_.window(); }
    FileBrowserFtab* panel(int page) const { return program_.panel(page); }
    /// Goes to the page by keys.
    void goTo(int page) const;
    /// Makes an entry of the shown panel current.
    void highlight(const QString& name) const;
    /// Turns on multi-selection in the shown panel and marks entries, all by keys.
    void mark(const QStringList& names);
    /// Choose an item by keys, from the soft key on.
    static void choose(Option item);
    static void choose(CopyItem item);
    /// Copies or moves an entry of the shown panel to the clipboard, then goes to a page.
    void toClipboard(CopyItem item, const QString& name, int thenGoTo);

    /// Chooses Paste; the user answers its questions so.
    void paste(std::initializer_list<CommandLog::Action> answers = {});
    /// What was on the clipboard is being worked on: the box says so, and nothing else has the
    /// keys.
    static bool showsPleaseWait(const QString& title);

    /// An error with that text is up, goes with the next key and leaves the keys to the panel.
    void dismissError(const QString& text) const;
    /// A message is up, goes with the next key and leaves the keys to the panel.
    void dismissMessage() const;

    /// What the log says when both panels are listed anew.
    QStringList bothListed() const;
    /// An executable file where the program looks for its mover. It only notes its arguments.
    void installMover();
    QByteArrayList moverArguments() const;

private:
    CommandLog log_; // outlives the program
    Program program_;
};

/// A column "page" with a row for each panel.
void addPages();
/// A column "isFolder" with a row for a file and one for a folder.
void addFileAndFolder();
/// Columns "folderThere" and "folderHere": what replaces what.
void addReplacements();
/// A column "name" of names that a file system allows and a careless program does not, and a column
/// "works": whether the shell gets at a file of that name, which stands between double quotes and
/// is not escaped.
void addOddNames();
/// The same without what a keypad cannot type into one line, and without "works".
void addTypedNames();

bool isFifo(const QString& path);
/// The menus there are, shown or not.
qsizetype menuCount();
/// The log's line for the question whether to replace an entry.
QString replaceQuestion(const QString& name);
/// Its lines for the removal of a folder, and for a removal that failed.
QString removal(const QString& path);
QString removalError();

// What a user does at a question or in a text dialog, for CommandLog::expect().
void yes();
void no();
/// Types into the field that has the keys, over what is selected.
void typeText(const QString& text);
/// Empties the field.
void eraseText();
/// Types and confirms.
CommandLog::Action typing(const QString& text);
