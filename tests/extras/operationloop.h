#pragma once

#include "extras/operation.h"

/// Runs an operation to its end, as whoever has no screen does. Everything in the way is answered
/// so.
inline void runToEnd(Operation& operation, Answer answer = Answer::Replace)
{
    constexpr int SliceMs = 100;
    while (!operation.hasEnded()) {
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
}
