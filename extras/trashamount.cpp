#include "extras/trashamount.h"

#include "extras/foldercursor.h"
#include "extras/treewalk.h"

#include <fcntl.h>
#include <sys/stat.h>

void TrashAmount::add(const Trash& trash, const QList<TrashEntry>& counted,
                      const std::atomic<bool>& isStopped)
{
    for (const TrashEntry& entry : counted) {
        const auto folder = isStopped ? std::nullopt : trash.at(entry.trash);
        if (!folder)
            continue;
        FolderCursor cursor(
            FileHandle(::openat(folder->files(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
        TreeWalk walk(cursor, entry.name);
        for (auto step = walk.next(); step != TreeWalk::Step::Ended && !isStopped;
             step = walk.next()) {
            if (step == TreeWalk::Step::Entry || step == TreeWalk::Step::Enter)
                count(walk.info());
        }
    }
}

void TrashAmount::count(const struct stat& about)
{
    ++entries_;
    if (S_ISREG(about.st_mode) && (about.st_nlink < 2 || seen_.insert(EntryIdentity::of(about))))
        bytes_ += about.st_size;
}
