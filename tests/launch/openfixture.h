#pragma once

#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandfixture.h"
#include "tests/support/keys.h"
#include "tests/widgets/boxtesting.h"

#include <memory>

/// The program with files to open and tables that say how; what it does is noted.
class OpenFixture : public QObject
{
protected:
    using Log = CommandLog;
    using Code = PhoneKey::Code;

    static QString error(const QString& text)
    {
        return Log::message(LANG_ERROR, text, QStringLiteral("error"));
    }

    /// What starts a plugin of the plugins folder, and what starts one by its path.
    static QString folderLine(const QByteArray& name, const QString& file)
    {
        const QByteArray folder = (work_folder + "/plugins/").toUtf8();
        return Log::shell(folder + name + '/' + name + " -d \"" + file.toUtf8() + "\"&");
    }

    static QString pathLine(const QByteArray& command, const QString& file)
    {
        return Log::shell(command + " \"" + file.toUtf8() + "\"&");
    }

    /// Ticks of the progress box until it goes.
    static int ticksLeft()
    {
        int ticks = 0;
        for (; processView->isUp() && ticks < 100; ++ticks)
            processView->aniUpdate();
        return ticks;
    }

    /// The program with tables, files in both panels and a page shown; no command is really run.
    void start(const QStringList& pluginLines, const QStringList& mimeLines,
               const QStringList& names, int page = 1)
    {
        const ScratchFolder& work = fixture_->program().workFolder();
        work.write("fm_plugins.cfg", pluginLines.join('\n').toUtf8());
        work.write("mime_types.cfg", mimeLines.join('\n').toUtf8());
        for (const int each : {1, 2})
            fixture_->write(each, names);
        fixture_->start(page);
        fixture_->log().setShell([](const QByteArray&) { return 0; });
    }

    void install(const QString& name)
    {
        fixture_->program().workFolder().write("plugins/" + name + '/' + name);
    }

    void relist()
    {
        fixture_->panel(1)->setDir(fixture_->panel(1)->curPath, 0);
        fixture_->log().take();
    }

    void pick(const QString& name)
    {
        fixture_->highlight(name);
        fixture_->log().take();
        pressKey(Code::Return);
    }

    /// Chooses an item of the submenu by keys.
    void chooseOpenWith(int position)
    {
        fixture_->log().take();
        pressKey(Code::SoftLeft);
        pressKey(Code::Return);
        for (int i = 0; i < position; ++i)
            pressKey(Code::Down);
        pressKey(Code::Return);
    }

    /// Lets the busy box go and closes the message, if there is one.
    void waitOut()
    {
        ticksLeft();
        if (textView->isUp())
            fixture_->dismissMessage();
        fixture_->log().take();
    }

    /// What was done, but for boxes that were taken away.
    QStringList taken()
    {
        QStringList lines = fixture_->log().take();
        lines.removeAll(Log::cleared());
        return lines;
    }

    std::unique_ptr<CommandFixture> fixture_;
};
