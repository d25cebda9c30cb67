#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <deque>
#include <functional>
#include <initializer_list>

/// What commands do, in order: the boxes and dialogs they show, the command lines they hand to the
/// shell, the listings they make. And the user, who answers their questions by keys. One at a time.
///
/// It stands between the commands and the boxes by the linker's "--wrap": whatever links
/// test_fileops must use it.
class CommandLog
{
public:
    using Action = std::function<void()>;
    using Shell = std::function<int(const QByteArray& command)>;

    CommandLog();
    ~CommandLog();
    CommandLog(const CommandLog&) = delete;
    CommandLog& operator=(const CommandLog&) = delete;

    /// What was done since the last call, a line each, as the functions below spell them.
    QStringList take();

    /// What the user does at the coming questions and text dialogs, one each, as soon as it has the
    /// keys. A question for which nothing is left fails the test and is answered no.
    void expect(std::initializer_list<Action> actions);
    /// How many of them were not asked for.
    int unused() const { return int(actions_.size()); }
    /// Expects none of them any more.
    void forget() { actions_.clear(); }

    /// What is run in the place of the shell, while this lives.
    void setShell(const Shell& shell) { shell_ = shell; }
    /// The system's own.
    static int realShell(const QByteArray& command);
    /// The same without what commands that fail say.
    static int quietShell(const QByteArray& command);

    // The lines of take(). Icons are as the commands name them, without "res/img/" and ".png".
    static QString question(const QString& title, const QString& text, const QString& icon);
    static QString message(const QString& title, const QString& text, const QString& icon);
    /// A box without keys.
    static QString notice(const QString& title, const QString& text, const QString& icon);
    static QString dialog(const QString& title, const QString& prompt, const QString& icon,
                          const QString& start);
    static QString progress(const QString& title, const QString& icon);
    /// The box of messages and questions was taken away by the command.
    static QString cleared();
    static QString shell(const QByteArray& command);
    static QString listed(const QString& folder);

    // For what stands in between.
    void add(const QString& line) { lines_.append(line); }
    /// Lets the user act once `ready` holds.
    void letUserAct(const std::function<bool()>& ready);
    int runShell(const QByteArray& command);

private:
    QStringList lines_;
    std::deque<Action> actions_;
    Shell shell_;
    QtMessageHandler handlerBefore_;
};
