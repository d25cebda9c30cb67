#include "platform/ztapordrag.h"

#include "platform/zskinservice.h"

#include <algorithm>
#include <cstdlib>

void ZTapOrDrag::press(int y, int top)
{
    isDown_ = true;
    dragged_ = false;
    y_ = y;
    top_ = top;
}

std::optional<int> ZTapOrDrag::move(int y, int rowHeight)
{
    if (!isDown_)
        return std::nullopt;
    const int distance = y_ - y;
    dragged_ = dragged_ || std::abs(distance) > ZSkinService::TapSlop;
    if (!dragged_)
        return std::nullopt;
    return top_ + distance / std::max(rowHeight, 1);
}

bool ZTapOrDrag::release()
{
    const bool tapped = isDown_ && !dragged_;
    isDown_ = false;
    return tapped;
}
