#include "extras/linkedfiles.h"

void LinkedFiles::add(const struct stat& source, Place place)
{
    const EntryIdentity identity = EntryIdentity::of(source);
    if (!S_ISREG(source.st_mode))
        return;
    // Of a file that is moved name by name the last one is its only one.
    const auto known = files_.constFind(identity);
    const bool isKnown = known != files_.constEnd();
    if (!isKnown && (source.st_nlink < 2 || (expected_ && !expected_->contains(identity))))
        return;
    const quint64 toCome = (isKnown ? known->toCome : quint64(source.st_nlink)) - 1;
    if (toCome == 0) {
        files_.erase(known);
        return;
    }
    files_.insert(identity,
                  {std::move(place), source.st_size, nanoseconds(source.st_mtim), toCome});
}

const LinkedFiles::Place* LinkedFiles::find(const struct stat& source) const
{
    if (files_.isEmpty() || !S_ISREG(source.st_mode))
        return nullptr;
    const auto known = files_.constFind(EntryIdentity::of(source));
    // Another file may have got its number meanwhile.
    if (known == files_.constEnd() || known->size != source.st_size ||
        known->modified != nanoseconds(source.st_mtim))
        return nullptr;
    return &known->place;
}
