#pragma once

#include <QLatin1String>

/// Names that the program, its helpers and the programs that it starts have in common.
namespace ProgramNames
{

/// What users read.
inline constexpr QLatin1String Program("Quarn");
/// The channel of the running instance.
inline constexpr char Channel[] = "Quarn";
/// The family as which the program's own font is registered.
inline constexpr QLatin1String Font("ZarnikFont");
/// The plugin that plays music, and its channel.
inline constexpr char Player[] = "LyraPlayer";
/// The environment variable that tells a plugin where the file manager's window is, in the form of
/// ZScreen::placeOnDisplay(): there it opens its own.
inline constexpr char PlaceVariable[] = "QUARN_PLACE";

} // namespace ProgramNames
