#pragma once

#include "extras/trash.h"

#include <QByteArray>

/// Shows what is in the trash of these places until the user leaves it, and does what is asked for;
/// see ExtrasModule::showTrash(). What is far comes into the list when it answers.
bool showTrashScreen(const QByteArray& folder, const Trash::Places& places);
