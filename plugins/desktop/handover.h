#pragma once

#include <QByteArray>
#include <QString>

/// What came of handing a file to the desktop.
enum class Handover {
    Done,
    NoFile,    ///< there is nothing under the path
    NoOpener,  ///< the system has no way to open files with the programs of a desktop
    NoProgram, ///< no program is for this kind of file
    Failed,    ///< there is one, but it did not open the file
};

/// The programs that know the desktop, found in $PATH.
struct DesktopTools {
    QByteArray opener = "xdg-open"; ///< gets a file
    QByteArray types = "xdg-mime";  ///< tells kinds of files, and the programs for them
    /// What fails later than this has opened the file, milliseconds: some openers wait for the
    /// program that they start, and give its status for their own.
    int longestFailure = 10000;
    /// What succeeds later than this has shown something, milliseconds. Some openers also succeed,
    /// at once, when nothing has opened the file.
    int longestNothing = 2000;
};

/// Hands a file to the desktop, and waits until its opener has ended. Needs no application object.
Handover handOver(const QString& file, const DesktopTools& tools = {});
