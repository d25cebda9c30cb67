#include "tests/fileops/commandlog.h"

#include "platform/keymap.h"
#include "shell/fm.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/widgets/boxtesting.h"
#include "widgets/kwidget.h"
#include "widgets/textinput.h"

#include <QCoreApplication>
#include <QTest>

#include <utility>

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

/// A box that notes what it is asked for. The rest it does as any other.
class NotedBox : public kWidget
{
public:
    explicit NotedBox(CommandLog& log) : log_(log) {}

    int showText(const QString& title, const QString& text, int align, const QString& icon,
                 int mode) override
    {
        log_.add(lineOf(title, text, align, icon, mode));
        if (mode == kWidget::Question)
            log_.letUserAct([this] { return isWaiting() && hasKeys(*this); });
        return kWidget::showText(title, text, align, icon, mode);
    }

    int showProcess(const QString& title, const QString& above, int alignAbove,
                    const QString& below, int alignBelow, const QString& icon, int mode) override
    {
        log_.add(CommandLog::progress(title, shortIcon(icon)));
        return kWidget::showProcess(title, above, alignAbove, below, alignBelow, icon, mode);
    }

    void init() override
    {
        if (this == textView)
            log_.add(CommandLog::cleared());
        kWidget::init();
    }

private:
    CommandLog& log_;
};

class NotedDialog : public TextInput
{
public:
    /// With the texts of another one.
    NotedDialog(CommandLog& log, const TextInput& other) : TextInput(work_folder), log_(log)
    {
        setFont(other.font());
        copyText = other.copyText;
        pasteText = other.pasteText;
        yesText = other.yesText;
        noText = other.noText;
        Init();
    }

    int showText(const QString& title, const QString& prompt, const QString& icon) override
    {
        log_.add(CommandLog::dialog(title, prompt, shortIcon(icon), inputText));
        log_.letUserAct([this] { return isRunning() && ZScreen::instance()->active() == this; });
        return TextInput::showText(title, prompt, icon);
    }

private:
    CommandLog& log_;
};

void replaceBox(kWidget*& box, CommandLog& log)
{
    const QFont font = box->font();
    delete box;
    box = new NotedBox(log);
    box->setFont(font);
}

} // namespace

CommandLog::CommandLog() : shell_(systemShell), handlerBefore_(qInstallMessageHandler(noteListings))
{
    forwardTo = handlerBefore_;
    theLog = this;
    ::setShell([this](const QByteArray& command) {
        add(shell(command));
        return shell_(command);
    });
}

CommandLog::~CommandLog()
{
    ::setShell(systemShell);
    theLog = nullptr;
    qInstallMessageHandler(handlerBefore_);
}

void CommandLog::watch(FM& window)
{
    replaceBox(textView, *this);
    replaceBox(processView, *this);
    const TextInput* before =
        std::exchange(window.textInput, new NotedDialog(*this, *window.textInput));
    delete before;
    // Its menu goes with it, but later.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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

int CommandLog::quietShell(const QByteArray& command)
{
    return systemShell("exec 2>/dev/null\n" + command);
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

QString CommandLog::busy()
{
    return progress(QStringLiteral("Processing.."), QStringLiteral("open_with"));
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
