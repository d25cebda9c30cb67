#pragma once

#include "platform/keymap.h"
#include "platform/zkeypadinput.h"
#include "platform/zmultilineedit.h"
#include "platform/zscreen.h"
#include "platform/zsymbolsheet.h"
#include "tests/support/keys.h"
#include "tests/support/scratchfolder.h"

#include <QTest>

#include <memory>

/// What holds the field, and notes the keys that it is left.
class KeyHolder : public QWidget
{
public:
    KeyHolder() : QWidget(ZScreen::instance())
    {
        ZScreen::instance()->place(this, ZScreen::Layer::Box);
        resize(ZScreen::Width, ZScreen::Height);
    }

    QList<int> codes;

protected:
    void keyPressEvent(QKeyEvent* event) override { codes.append(PhoneKey::code(*event)); }
};

/// A field of a device with a keypad, whose timers never end unless a test sets them.
class KeypadFixture : public QObject
{
protected:
    using Mode = KeypadTyping::Mode;
    using Code = PhoneKey::Code;

    /// Milliseconds; longer than any test takes.
    static constexpr int Never = 1000000;

    void begin()
    {
        setKeypad(true);
        makeField();
    }

    void end()
    {
        holder_.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        setKeypad(false);
        KeypadLetters::setLanguage(QString());
    }

    void makeField()
    {
        holder_ = std::make_unique<KeyHolder>();
        field_ = new ZMultiLineEdit(holder_.get(), false, 1, "ZLineEdit");
        field_->setGeometry(11, 150, 215, field_->sizeHint().height());
        holder_->show();
        field_->setFocus();
        keypad().setTimes(Never, Never);
    }

    /// As the file of keys says it.
    void setKeypad(bool isThere)
    {
        folder_.write("keymap.cfg", isThere ? "Keypad = 1\n" : "Keypad = 0\n");
        KeyMap::instance().load(folder_.path("keymap.cfg"));
        // A keyboard's letter forgets what was found out.
        KeyMap::instance().notice(
            QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a")));
    }

    static void pressToolkitKey(int key, const QString& text = QString())
    {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, Qt::NoModifier, text);
            QApplication::sendEvent(keyReceiver(), &event);
        }
    }

    /// Presses the keys of digits, "*" and "#"; ">" is the key Right, "<" Left, "c" the clear key.
    static void press(const QByteArray& keys)
    {
        for (const char key : keys) {
            pressKey(key == '>'   ? int(PhoneKey::Right)
                     : key == '<' ? int(PhoneKey::Left)
                     : key == 'c' ? int(PhoneKey::Clear)
                                  : int(key));
        }
    }

    /// A press and release of a key that says when it was.
    static void pressAt(int code, quint64 milliseconds)
    {
        QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier, QString(QChar(code)));
        event.setTimestamp(milliseconds);
        QApplication::sendEvent(keyReceiver(), &event);
        releaseKey(code);
    }

    ZKeypadInput& keypad() const { return field_->keypad(); }
    QWidget* badge() const { return field_->findChild<QWidget*>("ModeBadge"); }
    static ZSymbolSheet* sheet()
    {
        const auto sheets = ZScreen::instance()->findChildren<ZSymbolSheet*>();
        return sheets.isEmpty() ? nullptr : sheets.first();
    }

    ScratchFolder folder_;
    std::unique_ptr<KeyHolder> holder_;
    ZMultiLineEdit* field_ = nullptr;
};
