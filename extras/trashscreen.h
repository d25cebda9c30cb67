#pragma once

#include <QByteArray>

/// Shows what is in the trash until the user leaves it, and does what is asked for; see
/// ExtrasModule::showTrash().
bool showTrashScreen(const QByteArray& folder);
