#pragma once

#include "extras/entrychanges.h"

#include <QHash>

#include <utility>

/// Entries that have been seen. File systems number entries in a row, so that neighbours share one
/// place in memory: a million of them take about as much as some ten thousand names.
class InodeSet
{
public:
    /// Whether the entry was not in the set before.
    bool insert(const EntryIdentity& identity);
    bool contains(const EntryIdentity& identity) const;
    /// Places that are taken, each for up to 64 entries.
    qsizetype places() const { return places_.size(); }

private:
    static constexpr quint64 Bits = 64;

    QHash<std::pair<quint64, quint64>, quint64> places_; ///< bits, by the device and a number
};
