#pragma once

#include <QByteArray>

/// Counts who opens paths, for everything in the process, and makes them wait: a medium that does
/// not answer. It stands open at first, and opens when this goes. One at a time.
class OpenGate
{
public:
    OpenGate();
    ~OpenGate();
    OpenGate(const OpenGate&) = delete;
    OpenGate& operator=(const OpenGate&) = delete;

    /// Counts from here on whoever opens a path that begins so; if it ends with a NUL, that path
    /// alone.
    void watch(const QByteArray& start);
    /// The same, and makes them wait until it is opened, but for so many who come first. Nobody
    /// waits for longer than a test may.
    void shut(const QByteArray& start, int free = 0);
    void open();

    int passes() const;  ///< how many have come
    int waiting() const; ///< how many are waiting
};
