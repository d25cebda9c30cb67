#pragma once

#include <QString>

/// Small questions that every part of the program asks.
class util
{
public:
    /// argv[0] up to and including its last "/"; empty if it has none. Writes both to the debug
    /// stream.
    QString getProgramDir() const;
    /// Whether there is a file or folder of that path.
    bool fExist(const QString& path) const;
};

/// The program's one util object, made at start.
extern util* u;
