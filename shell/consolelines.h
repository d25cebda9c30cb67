#pragma once

/// What the program and the toolkit say on stderr.
///
/// Debug texts are a documented interface: they reach stderr as they are, whatever the environment
/// says about the toolkit's logging. Before there is a display the lines of the toolkit are kept
/// back: if there will be none they all mean one thing, and the user reads one line.
namespace ConsoleLines
{

/// From here on all lines go through here. Before the application object is made.
void install();

/// The application object is made. Writes what was kept back; without a display it says so and
/// ends the process with status 1. That is also what becomes of a server for VNC that does not get
/// its port.
void displayIsLookedFor();

} // namespace ConsoleLines
