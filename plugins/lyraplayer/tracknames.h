#pragma once

#include "plugins/lyraplayer/playlist.h"

#include <QString>

/// What a track is called where it has a place in a list: its title as the tags give it, or else
/// its file's name without the extension; of a stream without a title the address. `track` counts
/// from 0.
///
/// The number that it begins with, with or without that of a disc, goes where it is clear that it
/// is one of a track. It has a zero in front or is the place in the list; that of a file's name has
/// a sign behind it, or all files beside it begin with numbers, too; that of a title is in the
/// file's name as well. "99 Luftballons" and "4.48 Psychosis" stay.
QString songName(const QString& title, const Tracks& tracks, int track);

/// A row of the list of tracks: the place and the name. A title that keeps a number with a sign
/// ("9. Symphonie") goes without the place: two numbers one behind the other tell nothing.
QString trackRow(const QString& title, const Tracks& tracks, int track);
