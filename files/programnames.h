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

} // namespace ProgramNames
