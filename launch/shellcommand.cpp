#include "launch/shellcommand.h"

#include "files/names.h"
#include "shell/settings.h"

#include <cstdlib>
#include <optional>

namespace
{

struct Locale {
    QByteArray all;
    QByteArray characters;
};

std::optional<Locale> usersLocale;

Shell theShell = systemShell;

/// Gives an environment variable another value for a while; a null value takes it out.
class ChangedVariable
{
public:
    ChangedVariable(const char* name, const QByteArray& value) : name_(name), before_(qgetenv(name))
    {
        set(value);
    }
    ~ChangedVariable() { set(before_); }
    ChangedVariable(const ChangedVariable&) = delete;
    ChangedVariable& operator=(const ChangedVariable&) = delete;

private:
    void set(const QByteArray& value) const
    {
        if (value.isNull())
            qunsetenv(name_);
        else
            qputenv(name_, value);
    }

    const char* name_;
    QByteArray before_;
};

/// Bytes between double quotes that the shell takes as they are.
QByteArray escaped(const QByteArray& bytes)
{
    QByteArray result;
    for (const char byte : bytes) {
        if (byte == '"' || byte == '$' || byte == '`' || byte == '\\')
            result += '\\';
        result += byte;
    }
    return result;
}

/// Bytes between single quotes, which the shell takes as they are, whatever they are.
QByteArray taken(QByteArray bytes)
{
    return '\'' + bytes.replace('\'', "'\\''") + '\'';
}

int run(const ShellBytes& command)
{
    return command ? theShell(*command) : -1;
}

} // namespace

ShellBytes shellBytes(const QString& path)
{
    return encodeName(path);
}

ShellBytes quotedForShell(const QString& path)
{
    const ShellBytes bytes = shellBytes(path);
    if (!bytes)
        return bytes;
    if (extras.safe)
        return taken(*bytes);
    return joined({"\"", path.isValidUtf16() ? *bytes : escaped(*bytes), "\""});
}

ShellBytes joined(std::initializer_list<ShellBytes> pieces)
{
    QByteArray line;
    for (const ShellBytes& piece : pieces) {
        if (!piece)
            return std::nullopt;
        line += *piece;
    }
    return line;
}

int systemShell(const QByteArray& command)
{
    return std::system(command.constData());
}

void setShell(const Shell& shell)
{
    theShell = shell;
}

void keepUsersLocale()
{
    usersLocale = {qgetenv("LC_ALL"), qgetenv("LC_CTYPE")};
}

int runShell(const ShellBytes& command)
{
    if (!usersLocale)
        return run(command);
    const ChangedVariable all("LC_ALL", usersLocale->all);
    const ChangedVariable characters("LC_CTYPE", usersLocale->characters);
    return run(command);
}

int runShellInByteOrder(const ShellBytes& command)
{
    const ChangedVariable all("LC_ALL", "C");
    return run(command);
}
