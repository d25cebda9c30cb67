#pragma once

#include "extras/trash.h"
#include "tests/tools/filesystems.h"

#include <optional>

/// A home with a trash to be, and "top", which is told to be where a file system is mounted.
class TrashPlaces
{
public:
    /// Where the home's data folder lies: on the file system of "top", or on another.
    enum Home { Here, Elsewhere };

    explicit TrashPlaces(Home home = Here);

    /// "top" is there; paths in it.
    QByteArray top(const QByteArray& name) const { return folder_.path("top/" + name); }
    QByteArray top() const { return folder_.path("top"); }
    QByteArray home() const { return places_.dataHome; }
    /// The path of the user's own trash at the top.
    QByteArray ownTrash() const;
    /// Beside "top", on the same file system.
    QByteArray beside(const QByteArray& name) const { return folder_.path(name); }

    /// A path without what differs from one of these to the next.
    QByteArray relative(const QByteArray& path) const;

    /// Tells of "top" as of a file system of that type and with these options; more lines behind
    /// it.
    void tellMount(const QByteArray& type, const QByteArray& options,
                   const QByteArray& more = {}) const;
    const Trash::Places& places() const { return places_; }
    Trash trash() const { return Trash(places_); }
    /// The entry that was at a path; fails the test if there is none.
    TrashEntry entry(const QByteArray& path) const;

private:
    OwnFolder folder_;
    std::optional<OwnFolder> elsewhere_;
    Trash::Places places_;
};

/// The names in a folder, sorted; none if it is not there.
QByteArrayList namesOf(const QByteArray& folder);
