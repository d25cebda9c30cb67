#pragma once

#include "lang/texts.h"
#include "tests/fileops/commandtest.h"

/// What tests of moves expect to be asked and done.
class MoveTest : public CommandTest
{
protected:
    static QStringList sureQuestion(const QString& name, const QString& folder)
    {
        return {CommandLog::question(LANG_MOVE_SURE, name + " to " + folder, "warning")};
    }

    /// How each move ends that was not refused.
    QStringList ended() const
    {
        return QStringList(CommandLog::cleared()) + fixture_->bothListed();
    }
};
