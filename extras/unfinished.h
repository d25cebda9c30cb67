#pragma once

/// Asks, for each operation that was cut short, what is to become of it, and does that. Returns
/// whether anything was done.
bool offerUnfinishedOperations();
