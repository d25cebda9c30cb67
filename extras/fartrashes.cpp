#include "extras/fartrashes.h"

#include <QMetaObject>

#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

/// One file system. The thread that asks it keeps this for as long as it takes.
struct FarTrashes::Place {
    QByteArray top;
    std::mutex mutex;
    QList<TrashEntry> entries;
    bool isAsked = false;
    bool isAskedAgain = false;   ///< what it is about to answer is not true any more
    FarTrashes* owner = nullptr; ///< to be told; null when nobody wants to know any more
};

FarTrashes::FarTrashes(const Trash& trash, std::function<void()> changed)
    : trash_(trash), changed_(std::move(changed))
{
    for (const QByteArray& top : trash_.farTops()) {
        auto place = std::make_shared<Place>();
        place->top = top;
        place->owner = this;
        places_.push_back(place);
    }
}

FarTrashes::~FarTrashes()
{
    for (const auto& place : places_) {
        const std::lock_guard lock(place->mutex);
        place->owner = nullptr;
    }
}

void FarTrashes::ask()
{
    for (const auto& place : places_) {
        {
            const std::lock_guard lock(place->mutex);
            place->isAskedAgain = place->isAsked;
            if (std::exchange(place->isAsked, true))
                continue;
        }
        try {
            std::thread([place, trash = trash_] { look(*place, trash); }).detach();
        } catch (const std::system_error&) {
            // Without a thread nobody can ask; it is as if there were no answer.
            const std::lock_guard lock(place->mutex);
            place->isAsked = false;
        }
    }
}

void FarTrashes::look(Place& place, const Trash& trash)
{
    for (bool goesOn = true; goesOn;) {
        trash.tidyAt(place.top);
        QList<TrashEntry> entries = trash.entriesAt(place.top);
        const std::lock_guard lock(place.mutex);
        goesOn = std::exchange(place.isAskedAgain, false) && place.owner != nullptr;
        if (goesOn)
            continue;
        place.isAsked = false;
        place.entries = std::move(entries);
        if (FarTrashes* owner = place.owner)
            QMetaObject::invokeMethod(&owner->receiver_, owner->changed_, Qt::QueuedConnection);
    }
}

QList<TrashEntry> FarTrashes::entries() const
{
    QList<TrashEntry> result;
    for (const auto& place : places_) {
        const std::lock_guard lock(place->mutex);
        result.append(place->entries);
    }
    return result;
}

void FarTrashes::drop(const TrashEntry& entry)
{
    for (const auto& place : places_) {
        const std::lock_guard lock(place->mutex);
        place->isAskedAgain = place->isAsked;
        place->entries.removeIf([&entry](const TrashEntry& other) {
            return other.trash == entry.trash && other.name == entry.name;
        });
    }
}
