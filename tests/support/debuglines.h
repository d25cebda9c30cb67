#pragma once

#include <QStringList>

/// Collects what is written to the debug stream (qDebug and qWarning) while it lives.
class DebugLines
{
public:
    DebugLines();
    ~DebugLines();
    DebugLines(const DebugLines&) = delete;
    DebugLines& operator=(const DebugLines&) = delete;

    /// One entry a message, without the line break at its end.
    QStringList all() const;
    bool contains(const QString& message) const;
    /// Whether some message has `part` in it.
    bool mentions(const QString& part) const;
    void clear();
};
