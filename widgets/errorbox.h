#pragma once

#include <QString>

/// Shows a text in the box of messages as an error, which any key but the arrows closes. Returns at
/// once.
void showError(const QString& text);
