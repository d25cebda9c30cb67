#include "tests/extras/safecommandtest.h"

#include "platform/zmodule.h"
#include "shell/settings.h"
#include "tests/extras/safescreens.h"

#include <QDir>
#include <QFile>
#include <QTest>

void SafeCommandTest::init()
{
    // Where flushing costs nothing, however busy the disks are.
    fixture_ = std::make_unique<CommandFixture>(ScratchFolder::Memory);
    fixture_->log().setShell(CommandLog::quietShell);
    extras.safe = true;
    state_ = std::make_unique<ScratchFolder>(ScratchFolder::Memory);
    qputenv("XDG_STATE_HOME", QFile::encodeName(state_->path()));
    ZModule::setFolder(QByteArrayLiteral(QUARN_EXTRAS_MODULES));
}

void SafeCommandTest::cleanup()
{
    CommandTest::cleanup();
    ZModule::setExecutable({});
    QVERIFY(entryPage() == nullptr && operationBox() == nullptr);
    QCOMPARE(QDir(state_->path("quarn/journals")).entryList(QDir::Files | QDir::Hidden),
             QStringList());
    state_.reset();
}
