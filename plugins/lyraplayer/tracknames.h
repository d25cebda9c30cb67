#pragma once

#include <QByteArray>
#include <QString>

/// What a track is called where it has a place in a list: its title as the tags give it, or else
/// its file's name without the extension; of a stream without a title the address. `number` is its
/// place from 1 on. The number that a title or name begins with goes where it is clear that it is
/// one of a track: it has a zero or a sign beside it, or is the place.
QString songName(const QString& title, const QByteArray& track, int number);

/// A row of the list of tracks.
QString trackRow(const QString& title, const QByteArray& track, int number);
