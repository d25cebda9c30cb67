#pragma once

#include <QString>

/// Shows the progress box while another program is got ready and started; `above` may be empty. The
/// caller ends it with stop().
void showBusy(const QString& above = QString());
