#pragma once

#include "tools/sys_gui/move.h"

#include <sys/stat.h>

#include <vector>

/// A file, link or folder with all that is in it: listed once, then copied and removed as it was
/// listed, so that what comes into it meanwhile is never removed without a copy.
///
/// The operations return false when they fail or are interrupted; result() then says why. Paths of
/// any depth work, as far as the process may have files open (two for each level).
class Tree
{
public:
    /// The tree `name` in a folder. `folder` is a descriptor that must outlive the tree.
    Tree(int folder, const QByteArray& name, const MoveWatcher& watcher);

    /// Lists it. Fails also for what could not be removed afterwards, while nothing is done yet.
    bool list();
    /// Copies it into another folder, under a name that nothing has there.
    bool copy(int folder, const QByteArray& name);
    /// Whether copy() leaves it to its caller to see that the copy reaches the medium: waiting for
    /// each of many files takes far longer than for the whole file system once.
    bool isLarge() const { return count_ > FewEntries; }
    /// Whether copy() has made something of that name, be it whole or not.
    bool hasCopy() const { return hasCopy_; }
    /// Removes what was listed; something that changed since then stays and is a failure. It cannot
    /// be interrupted.
    bool remove();
    const MoveResult& result() const { return result_; }

    /// Tells the watcher how far it is; false when it wants to give up.
    bool goOn();
    /// Removes a tree that only we know, as far as it can.
    static void discard(int folder, const QByteArray& name);

private:
    static constexpr qint64 FewEntries = 32;

    struct Entry {
        QByteArray name;
        mode_t mode = 0;
        qint64 size = 0;
        timespec modified{};
        std::vector<Entry> content;
    };

    bool listEntry(int folder, Entry& entry);
    bool listContent(int folder, Entry& entry);
    bool copyEntry(int from, const Entry& entry, int to, const QByteArray& name);
    bool copyFile(int from, const Entry& entry, int to, const QByteArray& name);
    bool copyBytes(int from, int to);
    bool copyFolder(int from, const Entry& entry, int to, const QByteArray& name);
    bool copyLink(int from, const Entry& entry, const struct stat& info, int to,
                  const QByteArray& name);
    bool copySpecial(const struct stat& info, int to, const QByteArray& name);
    bool removeEntry(int folder, const Entry& entry);
    bool removeFolder(int folder, const Entry& entry);

    template<typename Entries, typename Action>
    bool forEach(Entries& entries, Action action);
    template<typename Call>
    auto finish(Call call);
    bool isUnchanged(const Entry& entry, const struct stat& info) const;
    bool fail(const char* attempt, int error);
    bool fail(const char* attempt, const QByteArray& reason);

    int folder_;
    const MoveWatcher& watcher_;
    Entry root_;
    QByteArray path_; ///< of the entry at work, for messages
    MoveProgress progress_;
    MoveResult result_;
    std::vector<char> block_;
    qint64 count_ = 0; ///< entries that were listed
    bool hasCopy_ = false;
};
