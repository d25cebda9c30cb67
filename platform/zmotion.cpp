#include "platform/zmotion.h"

namespace
{

bool enabled = false;

} // namespace

void ZMotion::setEnabled(bool on)
{
    enabled = on;
}

bool ZMotion::isEnabled()
{
    return enabled;
}
