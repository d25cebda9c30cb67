// Does one thing with a trash: DATA_HOME MOUNTS DOES PATH..., where DOES is "put", "restore",
// "replace" (what has taken the place), "delete" or "empty" (without a path). Goes on with what
// another run has begun, and says the outcome's number for each path.

#include "extras/trash.h"
#include "extras/trashremoval.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace
{

Trash::Outcome restored(const Trash& trash, const TrashEntry& entry, bool replacing)
{
    const auto whenTaken = replacing ? Trash::WhenTaken::Replace : Trash::WhenTaken::Tell;
    return trash.restore(entry, entry.path, whenTaken).outcome;
}

/// Whether the entry got its name before others that were called the same.
bool isFirstOfItsName(const TrashEntry& entry)
{
    return entry.name == entry.formerName();
}

/// Does it to the first entry that was at the path, or to all.
Trash::Outcome done(const Trash& trash, const QByteArray& does, const QByteArray& path)
{
    if (does == "put")
        return trash.put(path).outcome;
    Trash::Outcome outcome = Trash::Outcome::Gone;
    for (const TrashEntry& entry : trash.entries()) {
        if (does == "empty")
            outcome = trash.expunge(entry).outcome;
        else if (entry.path != path || !isFirstOfItsName(entry))
            continue;
        else if (does == "delete")
            return trash.expunge(entry).outcome;
        else
            return restored(trash, entry, does == "replace");
    }
    return outcome;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4)
        return EXIT_FAILURE;
    Trash::Places places;
    places.dataHome = argv[1];
    places.mounts = argv[2];
    places.user = geteuid();
    places.settledAfter = 0;
    const Trash trash(places);
    // As whoever looks at the trash does first.
    trash.tidy();
    const QByteArray does = argv[3];
    if (argc == 4)
        std::printf("%d\n", int(done(trash, does, {})));
    for (int i = 4; i < argc; ++i)
        std::printf("%d\n", int(done(trash, does, argv[i])));
    TrashRemoval removal(trash.existing());
    while (removal.step(100)) {
    }
    trash.tidy();
    return EXIT_SUCCESS;
}
