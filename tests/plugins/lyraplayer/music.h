#pragma once

#include "plugins/lyraplayer/mpvengine.h"
#include "tests/support/scratchfolder.h"

#include <QByteArray>
#include <QFile>
#include <QtEndian>

#include <cerrno>
#include <csignal>

// Music for the tests of the player, and what they check of mpv.

/// Milliseconds that a test waits at most. mpv starts in a fraction of a second on an idle machine.
constexpr int Patience = 60000;

inline QByteArray littleEndian(quint32 number, int bytes)
{
    const quint32 ordered = qToLittleEndian(number);
    return QByteArray(reinterpret_cast<const char*>(&ordered), bytes);
}

/// A piece of a RIFF file; pieces begin at even places.
inline QByteArray riffChunk(const QByteArray& name, const QByteArray& content)
{
    return name + littleEndian(quint32(content.size()), 4) + content +
           QByteArray(content.size() % 2, '\0');
}

/// A WAV file of silence.
inline QByteArray wav(double seconds, const QByteArray& title = {}, const QByteArray& artist = {},
                      const QByteArray& album = {})
{
    constexpr quint32 Rate = 8000; // samples of one byte a second
    const QByteArray format = littleEndian(1, 2) + littleEndian(1, 2) + littleEndian(Rate, 4) +
                              littleEndian(Rate, 4) + littleEndian(1, 2) + littleEndian(8, 2);
    QByteArray tags = "INFO";
    if (!title.isEmpty())
        tags += riffChunk("INAM", title + '\0');
    if (!artist.isEmpty())
        tags += riffChunk("IART", artist + '\0');
    if (!album.isEmpty())
        tags += riffChunk("IPRD", album + '\0');
    return riffChunk("RIFF", "WAVE" + riffChunk("fmt ", format) + riffChunk("LIST", tags) +
                                 riffChunk("data", QByteArray(int(seconds * Rate), '\x80')));
}

/// An mpv that plays to nobody.
inline MpvEngine::Settings silentMpv()
{
    MpvEngine::Settings settings;
    settings.options = QStringList{"--ao=null"};
    return settings;
}

/// A program that is started in the place of mpv.
inline MpvEngine::Settings insteadOfMpv(const ScratchFolder& folder, const QByteArray& script)
{
    folder.write("mpv", "#!/bin/bash\n" + script + '\n');
    folder.setMode("mpv", 0755);
    MpvEngine::Settings settings;
    settings.program = folder.path("mpv");
    return settings;
}

/// Whether a process is there, be it as a zombie.
inline bool processExists(qint64 id)
{
    return ::kill(pid_t(id), 0) == 0 || errno != ESRCH;
}

/// The path of a file in the folder as the player takes it.
inline QByteArray trackIn(const ScratchFolder& folder, const QString& name)
{
    return QFile::encodeName(folder.path(name));
}
