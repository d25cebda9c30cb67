#pragma once

#include <QString>
#include <QStringList>

/// What is to be run for a file. Names are as decodeName() gives them.
struct Command {
    QString program;       ///< a path, or a name that is looked for in $PATH
    QStringList arguments; ///< without the program
    QString folder;        ///< to run it in
    QString problem;       ///< why nothing can be run, a sentence; else empty

    /// A program, or a script that may be executed, is run itself. A script of a known type runs
    /// with its interpreter whether it may be executed or not; so do executable ones without a
    /// first line that names theirs, for which that is the shell if their type is unknown.
    static Command forFile(const QString& path);
};
