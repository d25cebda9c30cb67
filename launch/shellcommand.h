#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <initializer_list>
#include <optional>

/// A command line for the system's shell, or a piece of one: the bytes that the shell gets. Nothing
/// (nullopt) is what cannot be said since a path in it stands for no name; it is never run.
using ShellBytes = std::optional<QByteArray>;

/// A path as it is. Nothing is escaped or quoted.
ShellBytes shellBytes(const QString& path);

/// A path between double quotes. In a path that is text nothing is escaped, so the shell reads its
/// double quotes, dollar signs, back-quotes and backslashes; one with bytes that are no text stands
/// for those very bytes. With the setting for safe operations the shell reads nothing in any path.
ShellBytes quotedForShell(const QString& path);

/// Pieces one after the other; nothing if one of them is nothing.
ShellBytes joined(std::initializer_list<ShellBytes> pieces);

/// Notes the user's locale. To be called before the application is made, which may give this
/// process another: what the shell starts gets the one noted.
void keepUsersLocale();

/// What runs a command line and returns what system() would.
using Shell = std::function<int(const QByteArray& command)>;

/// The system's shell: system() itself.
int systemShell(const QByteArray& command);

/// Puts another shell in the place of the system's, or back: for who must know what is run.
void setShell(const Shell& shell);

/// Hands a command line to the shell and waits until the shell has ended, which for a line
/// ending in "&" is at once. Returns what system() returns; -1, and runs nothing, for nothing.
int runShell(const ShellBytes& command);

/// The same, but what the shell starts compares texts byte by byte, whatever the user's locale is.
/// Not for programs that the user sees or that go on in the background: they get that locale, too.
int runShellInByteOrder(const ShellBytes& command);
