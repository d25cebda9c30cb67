#pragma once

#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>

enum class Aside {
    Done,
    Stopped, ///< by the user, or since the program ends; it has come to an end, or even was done
    GoesOn   ///< stopped, too, but it has not ended yet
};

/// Work in a thread of its own, for a medium that may take long, while the event loop goes on. What
/// takes longer than a moment shows a box with its title and how far it is, in which the user can
/// stop it. Work that is stopped gets a moment to end, and may go on all the same. So it must own
/// whatever it uses, and look at the flag before it changes anything. `lateEnd` is called from its
/// thread at its end if it went on.
Aside runAside(const QString& title, std::function<void(const std::atomic<bool>& isStopped)> work,
               const std::function<QStringList()>& lines, std::function<void()> lateEnd = {});
