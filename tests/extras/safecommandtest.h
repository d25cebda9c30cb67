#pragma once

#include "tests/fileops/commandtest.h"

#include <memory>

/// Tests of commands on files that the module "extras" carries out, in a program with a state
/// folder of its own.
class SafeCommandTest : public CommandTest
{
    Q_OBJECT

protected:
    const ScratchFolder& files() const { return fixture_->files(); }
    FM* window() const { return fixture_->window(); }

    std::unique_ptr<ScratchFolder> state_; ///< "quarn/journals" is in it

protected slots:
    void init();
    /// Nothing that has come to its end leaves a screen, or anything to be finished.
    void cleanup();
};
