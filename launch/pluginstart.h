#pragma once

#include "launch/shellcommand.h"

/// runShell() for a command that starts a plugin, which is told where this program's window is,
/// and over VNC gets a port of its own.
int startPlugin(const ShellBytes& command);
