#pragma once

/// The phone's display, in its pixels.
namespace ScreenSize
{

inline constexpr int Width = 240;
inline constexpr int Height = 320;

} // namespace ScreenSize
