#pragma once

#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/widgets/boxtesting.h"
#include "widgets/textinput.h"

#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QTest>
#include <QWindow>

#include <memory>

/// A text dialog, with pictures in the folder that it takes them from.
class TextInputTest : public QObject
{
protected:
    void begin()
    {
        folder_ = std::make_unique<ScratchFolder>();
        for (const char* name : {"copy", "paste"})
            folder_->write(QStringLiteral("res/img/%1.png").arg(name),
                           plainPng(16, 16, name[0] == 'c' ? Qt::red : Qt::green));
        folder_->write("res/img/rename.png", plainPng(20, 10, Qt::blue));
        makeDialog(folder_->path() + '/');
    }

    void end()
    {
        dialog_.reset();
        folder_.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void makeDialog(const QString& folder)
    {
        dialog_ = std::make_unique<TextInput>(folder);
        dialog_->setFont(textFont());
        dialog_->Init();
    }

    QScrollArea* view() const { return dialog_->findChild<QScrollArea*>("TextInput"); }
    QLabel* label() const { return dialog_->findChild<QLabel*>(); }
    QLineEdit* edit() const { return dialog_->findChild<QLineEdit*>("ZLineEdit"); }

    static ZOptionsMenu* findMenu()
    {
        const auto menus = ZScreen::instance()->findChildren<ZOptionsMenu*>();
        return menus.size() == 1 ? menus.first() : nullptr;
    }

    /// As the file of keys says it.
    void setKeypad(bool isThere)
    {
        folder_->write("keymap.cfg", isThere ? "Keypad = 1\n" : "Keypad = 0\n");
        KeyMap::instance().load(folder_->path("keymap.cfg"));
    }

    /// Clicks where a user sees it, whatever lies there.
    static void click(QPoint screenPoint)
    {
        QWidget* window = ZScreen::instance()->window();
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {},
                          ZScreen::instance()->mapTo(window, screenPoint));
    }

    static void type(const QString& text) { QTest::keyClicks(keyReceiver(), text); }

    /// Opens the dialog and acts as soon as it has the keys. Returns the answer.
    int openAnd(const std::function<void()>& action, const QString& title = "Title",
                const QString& prompt = "Prompt", const QString& icon = QString())
    {
        const auto hasKeys = [this] {
            return dialog_->isRunning() && ZScreen::instance()->active() == dialog_.get();
        };
        once(hasKeys, [this, &action] {
            action();
            // A test that failed must not wait for ever.
            if (dialog_->isRunning())
                pressKey(PhoneKey::SoftRight);
        });
        return dialog_->showText(title, prompt, icon);
    }

    std::unique_ptr<ScratchFolder> folder_;
    std::unique_ptr<TextInput> dialog_;
};
