#pragma once

#include <optional>

/// Tells a tap on a list from a drag that scrolls it. Heights are pixels of the screen.
class ZTapOrDrag
{
public:
    /// A finger goes down at a height while `top` is the first row in view.
    void press(int y, int top);
    /// It moves: the row that is to be the first now, which may be out of range; nullopt while it
    /// has not moved far enough for a drag.
    std::optional<int> move(int y, int rowHeight);
    /// It goes up; whether that was a tap.
    bool release();
    /// Forgets a finger that is down.
    void cancel() { isDown_ = false; }

private:
    bool isDown_ = false;
    bool dragged_ = false;
    int y_ = 0;
    int top_ = 0;
};
