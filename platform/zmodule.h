#pragma once

#include <QByteArray>
#include <QFunctionPointer>

/// Parts of the program that are shared objects of their own, opened when they are first used.
///
/// A module uses the program's copy of this toolkit, so the executable must export it: CMake's
/// quarn_opens_modules() does that.
class ZModule
{
public:
    /// The function that the module `name` exports as "<name>_module". nullptr, with a line on
    /// stderr, if the module is missing, does not fit this program or has no such function; the
    /// next call tries again. A module stays open until the process ends, and one that is open
    /// serves on when its file is replaced. Once the program's own file was replaced or taken away
    /// no other is opened: modules fit the program that they came with alone.
    static QFunctionPointer open(const char* name);

    /// Whether open() refuses this module since the program was upgraded while it runs: another
    /// file lies where it was started from.
    static bool needsRestart(const char* name);

    /// Where modules are, in bytes: the folder "modules" beside the executable, unless one is set.
    static QByteArray folder();
    static void setFolder(const QByteArray& folder);

    /// The file that the program is taken to run from, as the system names it: one without a name
    /// any more ends in " (deleted)". Empty: the one that it does run from.
    static void setExecutable(const QByteArray& path);
};
