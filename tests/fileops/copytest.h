#pragma once

#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "tests/fileops/commandfixture.h"
#include "tests/fileops/duringwork.h"
#include "tests/support/keys.h"
#include "widgets/kwidget.h"

#include <QTest>

#include <memory>

// What the tests of copying share.

constexpr qint64 Block = 524288;
constexpr qint64 GiB = 1024LL * 1024 * 1024;

using Log = CommandLog;

inline QString progressText(const QString& src, const QString& dst, const QString& completed)
{
    return src + "\nto\n" + dst + "<hr>Completed: " + completed;
}

inline QString progress(const QString& src, const QString& dst, const QString& completed)
{
    return Log::notice(LANG_COPYING, progressText(src, dst, completed), "copy");
}

/// The boxes of a file of one block: before the first block, and after it.
inline QStringList smallFile(const QString& src, const QString& dst, const QString& size)
{
    const QString box = progress(src, dst, "0% (0 b/" + size + ")");
    return {box, box};
}

inline QString cp(const QString& src, const QString& dst)
{
    return Log::shell("cp -R \"" + src.toUtf8() + "\" \"" + dst.toUtf8() + '"');
}

/// The program with a left folder to copy from and a right one to copy to.
class CopyTest : public QObject
{
protected:
    void begin()
    {
        fixture_ = std::make_unique<CommandFixture>();
        window_ = fixture_->start();
    }

    void end()
    {
        if (!QTest::currentTestFailed())
            QVERIFY2(!textView->isUp(), "a box was left");
        fixture_.reset();
    }

    const ScratchFolder& files() const { return fixture_->files(); }
    QString left(const QString& name = QString()) const { return fixture_->left(name); }
    QString right(const QString& name = QString()) const { return fixture_->right(name); }
    QStringList taken() { return fixture_->log().take(); }
    void write(const QString& name, const QByteArray& content) const
    {
        files().write("left/" + name, content);
    }
    QByteArray read(const QString& name) const { return files().read("right/" + name); }

    /// Copies to the right panel's folder with the modifier held.
    void copyBuiltIn(const QString& src)
    {
        holdKey(PhoneKey::Modifier);
        window_->copy(src, right());
        releaseKey(PhoneKey::Modifier);
        window_->modKeyHeld = false;
    }

    std::unique_ptr<CommandFixture> fixture_;
    FM* window_ = nullptr;
};
