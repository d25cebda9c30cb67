#pragma once

#include "extras/trash.h"

#include <QByteArray>
#include <QList>
#include <QObject>

#include <functional>
#include <memory>
#include <vector>

/// What is in the trashes of file systems that others answer for, which may take long or never do.
/// Each is looked at in a thread of its own: nobody waits for any, and one that does not answer has
/// no entries.
class FarTrashes
{
public:
    /// `changed` is called by the event loop of the thread that makes this, whenever one has
    /// answered.
    FarTrashes(const Trash& trash, std::function<void()> changed);
    ~FarTrashes();
    FarTrashes(const FarTrashes&) = delete;
    FarTrashes& operator=(const FarTrashes&) = delete;

    /// Asks all; those that have not answered yet, when they have.
    void ask();
    /// What they have answered so far.
    QList<TrashEntry> entries() const;
    /// An entry has left its trash.
    void drop(const TrashEntry& entry);

private:
    struct Place;

    static void look(Place& place, const Trash& trash);

    Trash trash_;
    std::function<void()> changed_;
    QObject receiver_;
    std::vector<std::shared_ptr<Place>> places_;
};
