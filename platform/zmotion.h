#pragma once

/// Whether anything on the screen moves by itself but what shows that work goes on. Off until it is
/// switched on.
namespace ZMotion
{

void setEnabled(bool on);
bool isEnabled();

} // namespace ZMotion
