#include "extras/entryfacts.h"

#include "extras/entrychanges.h"

EntryFacts factsOf(const struct stat& info)
{
    EntryFacts facts;
    facts.type = S_ISDIR(info.st_mode)   ? EntryType::Folder
                 : S_ISLNK(info.st_mode) ? EntryType::Link
                 : S_ISREG(info.st_mode) ? EntryType::File
                                         : EntryType::Other;
    facts.size = info.st_size;
    facts.modified = nanoseconds(info.st_mtim);
    return facts;
}
