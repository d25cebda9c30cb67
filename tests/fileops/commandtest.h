#pragma once

#include "tests/fileops/commandfixture.h"

#include <QObject>

#include <memory>

/// A test object with a new program for each function; what commands say on stderr is kept back.
/// A function must use up the user's actions that it expects.
class CommandTest : public QObject
{
    Q_OBJECT

protected:
    /// What the log has had to note since the last call.
    QStringList log() { return fixture_->log().take(); }

    std::unique_ptr<CommandFixture> fixture_;

protected slots:
    void init();
    void cleanup();
};
