#include "extras/inodeset.h"

bool InodeSet::insert(const EntryIdentity& identity)
{
    constexpr quint64 Bits = 64;
    quint64& place = places_[{identity.device, identity.inode / Bits}];
    const quint64 bit = quint64(1) << (identity.inode % Bits);
    const bool isNew = (place & bit) == 0;
    place |= bit;
    return isNew;
}
