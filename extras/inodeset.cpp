#include "extras/inodeset.h"

bool InodeSet::insert(const EntryIdentity& identity)
{
    quint64& place = places_[{identity.device, identity.inode / Bits}];
    const quint64 bit = quint64(1) << (identity.inode % Bits);
    const bool isNew = (place & bit) == 0;
    place |= bit;
    return isNew;
}

bool InodeSet::contains(const EntryIdentity& identity) const
{
    const quint64 place = places_.value({identity.device, identity.inode / Bits});
    return (place & (quint64(1) << (identity.inode % Bits))) != 0;
}
