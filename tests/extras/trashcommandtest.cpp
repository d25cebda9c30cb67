#include "tests/extras/trashcommandtest.h"

#include "files/names.h"
#include "platform/keymap.h"
#include "platform/zmodule.h"
#include "shell/settings.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "widgets/kwidget.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <utility>

#include <fcntl.h>
#include <sys/file.h>

void TrashCommandTest::initTestCase()
{
    const QString path = QDir::tempPath() + QStringLiteral("/quarn-trash-test.lock");
    trashes_ = FileHandle(open(encodedPath(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    QVERIFY(trashes_.isOpen());
    QVERIFY(flock(trashes_.get(), LOCK_SH) == 0);
}

void TrashCommandTest::init()
{
    CommandTest::init();
    extras.trash = true;
    data_ = std::make_unique<ScratchFolder>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(data_->path()));
    ZModule::setFolder(QByteArrayLiteral(QUARN_EXTRAS_MODULES));
}

void TrashCommandTest::cleanup()
{
    CommandTest::cleanup();
    ZModule::setExecutable({});
    QVERIFY(entryPage() == nullptr && operationBox() == nullptr);
    data_.reset();
}

void TrashCommandTest::follow(const QList<Step>& steps)
{
    if (steps.isEmpty())
        return;
    once(steps.first().seen, [steps] {
        steps.first().action();
        // A test that has failed must come to its end, too.
        if (QTest::currentTestFailed())
            once([] { return pageWithKeys() != nullptr; }, [] { pressKey(PhoneKey::SoftRight); });
        else
            follow(steps.mid(1));
    });
}

QWidget* TrashCommandTest::pageWithKeys()
{
    for (auto* page : ZScreen::instance()->findChildren<QWidget*>("EntryPage")) {
        if (page->isVisible() && ZScreen::instance()->isActive(page))
            return page;
    }
    return nullptr;
}

QStringList TrashCommandTest::rowsWithKeys()
{
    QStringList rows;
    auto* list = pageWithKeys() != nullptr ? pageWithKeys()->findChild<ZListBox*>() : nullptr;
    for (int row = 0; list != nullptr && row < list->count(); ++row)
        rows.append(list->item(row)->getSubItemText(1, 0) + '|' +
                    list->item(row)->getSubItemText(1, 1));
    return rows;
}

std::function<bool()> TrashCommandTest::rows(int count)
{
    return [count] { return pageWithKeys() != nullptr && rowsWithKeys().size() == count; };
}

bool TrashCommandTest::messageHasKeys()
{
    return textView->isUp() && ZScreen::instance()->isActive(textView);
}

/// Seen twice: at first what has asked may not have gone on yet, and would not hear what is wanted.
std::function<bool()> TrashCommandTest::unasked(int answers)
{
    return [this, answers, wasSeen = std::make_shared<bool>(false)] {
        const bool isSeen = pageWithKeys() != nullptr && !textView->isWaiting() &&
                            fixture_->log().unused() == answers;
        return std::exchange(*wasSeen, isSeen) && isSeen;
    };
}

void TrashCommandTest::leave()
{
    pressKey(PhoneKey::SoftRight);
}

std::function<void()> TrashCommandTest::choosing(char digit)
{
    return [digit] {
        pressKey(PhoneKey::SoftLeft);
        pressKey(digit);
    };
}

void TrashCommandTest::throwAway(const QString& name)
{
    fixture_->highlight(name);
    fixture_->log().expect({yes});
    CommandFixture::choose(CommandFixture::Delete);
}

void TrashCommandTest::putFolder(const ScratchFolder& data, const QString& path)
{
    const QString name = path.section(QLatin1Char('/'), -1);
    data.write("Trash/files/" + name + "/in", "content");
    data.write("Trash/info/" + name + ".trashinfo",
               "[Trash Info]\nPath=" + QFile::encodeName(path) +
                   "\nDeletionDate=2026-01-01T00:00:00\n");
}

QStringList TrashCommandTest::trashed() const
{
    return QDir(data_->path("Trash/files"))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                   QDir::Name);
}
