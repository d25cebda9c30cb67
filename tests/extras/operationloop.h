#pragma once

#include "extras/operation.h"
#include "files/filehandle.h"

#include <fcntl.h>
#include <sys/file.h>

/// Runs an operation to its end, as whoever has no screen does, and waits for what it leaves behind
/// the scenes. Everything in the way is answered so.
inline void runToEnd(Operation& operation, Answer answer = Answer::Replace)
{
    constexpr int SliceMs = 100;
    QByteArray journal;
    while (!operation.hasEnded()) {
        if (!operation.journal().isEmpty())
            journal = operation.journal();
        switch (operation.step(SliceMs)) {
        case Operation::State::Surveyed:
            operation.decideForAll(answer);
            operation.begin();
            break;
        case Operation::State::Asking:
            operation.answer(answer, true);
            break;
        default:
            break;
        }
    }
    // What was stopped may still be put in order; the journal is locked until that is done.
    const FileHandle file(open(journal.constData(), O_RDWR | O_CLOEXEC));
    if (file.isOpen())
        flock(file.get(), LOCK_EX);
}
