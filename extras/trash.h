#pragma once

#include "extras/trashfolder.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QList>

#include <atomic>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include <sys/types.h>

/// Something in a trash.
struct TrashEntry {
    QByteArray trash;   ///< the path of the trash
    QByteArray name;    ///< its name there
    QByteArray path;    ///< where it was, absolute; empty if that is not known
    qint64 deleted = 0; ///< when, seconds since 1970; 0 if that is not known
    qint64 bytes = -1;  ///< its size, of a folder what it takes on the disk; -1 if not known
    unsigned mode = 0;  ///< kind and permissions
    TrashedId id;

    /// What it was called; its name in the trash if that is not known.
    QByteArray formerName() const;
    /// Where it was; its name in the trash if that is not known.
    const QByteArray& pathOrName() const { return path.isEmpty() ? name : path; }
};

/// The user's trashes: the one in the home folder, and those of all file systems that are mounted.
/// Entries are renamed on their file system and never copied, and no link is followed: what is put
/// there, restored or deleted is the link itself.
///
/// Whenever it is cut short, each entry is whole in one place, and in the list if it is in a trash.
/// Needs no window. Paths are absolute, and bytes.
class Trash
{
public:
    /// Where to look.
    struct Places {
        QByteArray dataHome;      ///< the user's data folder; empty if there is none
        QByteArray mounts;        ///< a file as "/proc/self/mountinfo"
        uid_t user = 0;           ///< whose trashes
        qint64 settledAfter = 60; ///< seconds after which no other program is still at it
    };
    static Places placesOfUser();

    explicit Trash(Places places) : places_(std::move(places)) {}

    enum class Outcome {
        Done,
        NoTrash, ///< there is none for it, or it cannot be used; `error` says why, if anything does
        Refused, ///< it is a trash, or a trash lies in it
        Gone,    ///< it is not there, or not the one that was meant
        Taken,   ///< there is something at its place
        Elsewhere, ///< that is on another file system, at the path of the result
        Failed     ///< `error` says why
    };
    struct Result {
        Outcome outcome = Outcome::Done;
        int error = 0;   ///< errno, or 0
        QByteArray path; ///< where it is now
    };
    enum class WhenTaken {
        Tell,    ///< do nothing
        Replace, ///< put what is there into the trash
        KeepBoth ///< put it beside, with a number in its name
    };

    /// Moves an entry into the trash: of the home folder if that is on the same file system, else
    /// at the top of its own. What lies in a trash already has none. Waits for the medium; what is
    /// stopped before the entry has moved fails with ECANCELED.
    Result put(const QByteArray& path, const std::atomic<bool>& isStopped = Never) const;

    /// All there is in all trashes that are near, in no order. What has no usable info file is
    /// there, too. `goesOn` is told how many have been found so far, and ends the search by false.
    using GoesOn = std::function<bool(qsizetype)>;
    QList<TrashEntry> entries(const GoesOn& goesOn = {}) const;
    /// The tops of file systems that others answer for, who may be gone. Asks none of them.
    QByteArrayList farTops() const;
    /// What is in the trashes at the top of a file system.
    QList<TrashEntry> entriesAt(const QByteArray& top) const;

    /// Moves an entry to `path`, which is where it was or another place. Folders that are missing
    /// on the way are made. What would have to be copied is not: the caller does that, and then has
    /// it forgotten.
    Result restore(const TrashEntry& entry, const QByteArray& path, WhenTaken whenTaken) const;
    /// Removes what the trash still tells of an entry that has left it. False if it has not.
    bool forget(const TrashEntry& entry) const;

    /// Deletes an entry. A folder leaves the list at once and is taken apart by a TrashRemoval.
    /// What is stopped before the entry has left fails with ECANCELED.
    Result expunge(const TrashEntry& entry, const std::atomic<bool>& isStopped = Never) const;

    /// Removes what interrupted work of any program left: info files of nothing, sizes of nothing.
    void tidy() const;
    /// The same at the top of a file system.
    void tidyAt(const QByteArray& top) const;

    /// The trashes that there are, each once, but for those that are far.
    std::vector<TrashFolder> existing() const;
    /// The trash with that path, be it far.
    std::optional<TrashFolder> at(const QByteArray& path) const;

private:
    static constexpr std::atomic<bool> Never = false;

    using Candidate = std::function<std::optional<TrashFolder>()>;

    std::vector<TrashFolder> existingAt(const QByteArray& top) const;
    std::vector<QByteArray> tops() const;
    std::vector<Candidate> candidates(int folder) const;

    Places places_;
};
