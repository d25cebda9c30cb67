#pragma once

#include <functional>

/// Runs `action` from the event loop as soon as `condition` holds: how a test acts while a question
/// blocks it. Waits ten seconds at most, then ends the process, since the test would hang.
void once(const std::function<bool()>& condition, const std::function<void()>& action);
