#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// Work in slices, which the event loop carries out. What takes longer than a moment shows a box
/// with its title and how far it is, in which the user can stop it. Returns when `step` says that
/// it is done (false), when the user has stopped it, or when the program ends; true in the first
/// case. `step` gets the milliseconds that it may take; `lines` says how far it is.
bool runInSlices(const QString& title, const std::function<bool(int)>& step,
                 const std::function<QStringList()>& lines);
