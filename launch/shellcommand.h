#pragma once

#include <QString>

/// A path as a piece of a shell command line: its UTF-8 bytes, each as one character, so that the
/// command line's Latin-1 form holds the bytes of the file system. Nothing is escaped or quoted.
QString shellBytes(const QString& path);

/// shellBytes() between double quotes. Double quotes, dollar signs and backslashes in the path are
/// not escaped.
QString quotedForShell(const QString& path);

/// Notes the user's locale. To be called before the application is made, which may give this process
/// another: what the shell starts gets the one noted.
void keepUsersLocale();

/// Hands a command line, as Latin-1, to the system's shell and waits until the shell has ended,
/// which for a line ending in "&" is at once. Returns what system() returns.
int runShell(const QString& command);

/// The same, but what the shell starts compares texts byte by byte, whatever the user's locale is.
/// Not for programs that the user sees or that go on in the background: they get that locale, too.
int runShellInByteOrder(const QString& command);
