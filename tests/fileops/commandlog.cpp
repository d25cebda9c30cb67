#include "tests/fileops/commandlog.h"

#include "platform/keymap.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/widgets/boxtesting.h"
#include "widgets/kwidget.h"
#include "widgets/textinput.h"

#include <QTest>

// The linker leads each call of these to the one below it. Methods have their object as the first
// argument.
int realSystem(const char* command) __asm__("__real_system");
int wrapSystem(const char* command) __asm__("__wrap_system");
int realShowText(kWidget* box, const QString& title, const QString& text, int align,
                 const QString& icon,
                 int mode) __asm__("__real__ZN7kWidget8showTextERK7QStringS2_iS2_i");
int wrapShowText(kWidget* box, const QString& title, const QString& text, int align,
                 const QString& icon,
                 int mode) __asm__("__wrap__ZN7kWidget8showTextERK7QStringS2_iS2_i");
int realShowProcess(kWidget* box, const QString& title, const QString& above, int alignAbove,
                    const QString& below, int alignBelow, const QString& icon,
                    int mode) __asm__("__real__ZN7kWidget11showProcessERK7QStringS2_iS2_iS2_i");
int wrapShowProcess(kWidget* box, const QString& title, const QString& above, int alignAbove,
                    const QString& below, int alignBelow, const QString& icon,
                    int mode) __asm__("__wrap__ZN7kWidget11showProcessERK7QStringS2_iS2_iS2_i");
void realInit(kWidget* box) __asm__("__real__ZN7kWidget4initEv");
void wrapInit(kWidget* box) __asm__("__wrap__ZN7kWidget4initEv");
int realDialog(TextInput* dialog, const QString& title, const QString& prompt,
               const QString& icon) __asm__("__real__ZN9TextInput8showTextERK7QStringS2_S2_");
int wrapDialog(TextInput* dialog, const QString& title, const QString& prompt,
               const QString& icon) __asm__("__wrap__ZN9TextInput8showTextERK7QStringS2_S2_");

namespace
{

constexpr int Centred = 4;

CommandLog* theLog = nullptr;

QString line(const char* kind, const QStringList& parts)
{
    return QLatin1String(kind) + QStringLiteral(" | ") + parts.join(QStringLiteral(" | "));
}

QString shortIcon(const QString& icon)
{
    const QString before = QStringLiteral("res/img/");
    const QString after = QStringLiteral(".png");
    return icon.startsWith(before) && icon.endsWith(after)
               ? icon.mid(before.size(), icon.size() - before.size() - after.size())
               : QStringLiteral("unexpected icon ") + icon;
}

QString lineOf(const QString& title, const QString& text, int align, const QString& icon, int mode)
{
    const QString name = shortIcon(icon);
    const QString odd = align == Centred ? QString() : QStringLiteral(" | align %1").arg(align);
    if (mode == kWidget::Question)
        return CommandLog::question(title, text, name) + odd;
    if (mode == kWidget::Message)
        return CommandLog::message(title, text, name) + odd;
    return CommandLog::notice(title, text, name) + odd;
}

QtMessageHandler forwardTo = nullptr;

void noteListings(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const QString listing = QStringLiteral("fb::set path ");
    if (message.startsWith(listing))
        theLog->add(CommandLog::listed(message.mid(listing.size())));
    else if (type != QtDebugMsg)
        forwardTo(type, context, message);
}

} // namespace

int wrapSystem(const char* command)
{
    return theLog != nullptr ? theLog->runShell(command) : realSystem(command);
}

int wrapShowText(kWidget* box, const QString& title, const QString& text, int align,
                 const QString& icon, int mode)
{
    if (theLog != nullptr) {
        theLog->add(lineOf(title, text, align, icon, mode));
        if (mode == kWidget::Question)
            theLog->letUserAct([box] { return box->isWaiting() && hasKeys(*box); });
    }
    return realShowText(box, title, text, align, icon, mode);
}

int wrapShowProcess(kWidget* box, const QString& title, const QString& above, int alignAbove,
                    const QString& below, int alignBelow, const QString& icon, int mode)
{
    if (theLog != nullptr)
        theLog->add(CommandLog::progress(title, shortIcon(icon)));
    return realShowProcess(box, title, above, alignAbove, below, alignBelow, icon, mode);
}

void wrapInit(kWidget* box)
{
    if (theLog != nullptr && box == textView)
        theLog->add(CommandLog::cleared());
    realInit(box);
}

int wrapDialog(TextInput* dialog, const QString& title, const QString& prompt, const QString& icon)
{
    if (theLog != nullptr) {
        theLog->add(CommandLog::dialog(title, prompt, shortIcon(icon), dialog->inputText));
        theLog->letUserAct(
            [dialog] { return dialog->isRunning() && ZScreen::instance()->active() == dialog; });
    }
    return realDialog(dialog, title, prompt, icon);
}

CommandLog::CommandLog() : shell_(realShell), handlerBefore_(qInstallMessageHandler(noteListings))
{
    forwardTo = handlerBefore_;
    theLog = this;
}

CommandLog::~CommandLog()
{
    theLog = nullptr;
    qInstallMessageHandler(handlerBefore_);
}

QStringList CommandLog::take()
{
    return std::exchange(lines_, {});
}

void CommandLog::expect(std::initializer_list<Action> actions)
{
    actions_.insert(actions_.end(), actions);
}

void CommandLog::letUserAct(const std::function<bool()>& ready)
{
    Action action = [] {
        pressKey(PhoneKey::SoftRight);
        QFAIL("a question that the test does not expect");
    };
    if (!actions_.empty()) {
        action = actions_.front();
        actions_.pop_front();
    }
    once(ready, [=] {
        action();
        // A test that has failed must not wait for an answer that never comes.
        if (QTest::currentTestFailed() && ready())
            pressKey(PhoneKey::SoftRight);
    });
}

int CommandLog::runShell(const QByteArray& command)
{
    add(shell(command));
    return shell_(command);
}

int CommandLog::realShell(const QByteArray& command)
{
    return realSystem(command.constData());
}

int CommandLog::quietShell(const QByteArray& command)
{
    return realShell("exec 2>/dev/null\n" + command);
}

QString CommandLog::question(const QString& title, const QString& text, const QString& icon)
{
    return line("question", {title, text, icon});
}

QString CommandLog::message(const QString& title, const QString& text, const QString& icon)
{
    return line("message", {title, text, icon});
}

QString CommandLog::notice(const QString& title, const QString& text, const QString& icon)
{
    return line("notice", {title, text, icon});
}

QString CommandLog::dialog(const QString& title, const QString& prompt, const QString& icon,
                           const QString& start)
{
    return line("dialog", {title, prompt, icon, start});
}

QString CommandLog::progress(const QString& title, const QString& icon)
{
    return line("progress", {title, icon});
}

QString CommandLog::cleared()
{
    return QStringLiteral("cleared");
}

QString CommandLog::shell(const QByteArray& command)
{
    // A character a byte, so that a difference shows.
    return line("shell", {QString::fromLatin1(command)});
}

QString CommandLog::listed(const QString& folder)
{
    return line("listed", {folder});
}
