#pragma once

#include "launch/shellcommand.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <deque>
#include <functional>
#include <initializer_list>

class FM;

/// What commands do, in order: the boxes and dialogs they show, the command lines they hand to the
/// shell, the listings they make. And the user, who answers their questions by keys. One at a time.
///
/// Command lines come to it from the start, the boxes once it watches the main window; it must
/// outlive that.
class CommandLog
{
public:
    using Action = std::function<void()>;

    CommandLog();
    ~CommandLog();
    CommandLog(const CommandLog&) = delete;
    CommandLog& operator=(const CommandLog&) = delete;

    /// Puts boxes and a text dialog that tell this log in the place of the window's, none of which
    /// may be up.
    void watch(FM& window);

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
    /// The system's own without what commands that fail say.
    static int quietShell(const QByteArray& command);

    // The lines of take(). Icons are as the commands name them, without "res/img/" and ".png".
    static QString question(const QString& title, const QString& text, const QString& icon);
    static QString message(const QString& title, const QString& text, const QString& icon);
    /// A box without keys.
    static QString notice(const QString& title, const QString& text, const QString& icon);
    static QString dialog(const QString& title, const QString& prompt, const QString& icon,
                          const QString& start);
    static QString progress(const QString& title, const QString& icon);
    /// What is shown while a program is started.
    static QString busy();
    /// The box of messages and questions was taken away by the command.
    static QString cleared();
    static QString shell(const QByteArray& command);
    static QString listed(const QString& folder);

    // For the boxes.
    void add(const QString& line) { lines_.append(line); }
    /// Lets the user act once `ready` holds.
    void letUserAct(const std::function<bool()>& ready);

private:
    QStringList lines_;
    std::deque<Action> actions_;
    Shell shell_;
    QtMessageHandler handlerBefore_;
};
