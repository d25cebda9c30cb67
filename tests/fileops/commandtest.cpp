#include "tests/fileops/commandtest.h"

#include <QTest>

void CommandTest::init()
{
    fixture_ = std::make_unique<CommandFixture>();
    fixture_->log().setShell(CommandLog::quietShell);
}

void CommandTest::cleanup()
{
    QCOMPARE(fixture_->log().unused(), 0);
    fixture_.reset();
}
