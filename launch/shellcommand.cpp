#include "launch/shellcommand.h"

#include <QByteArray>

#include <cstdlib>
#include <optional>

namespace
{

struct Locale {
    QByteArray all;
    QByteArray characters;
};

std::optional<Locale> usersLocale;

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

int run(const QString& command)
{
    return std::system(command.toLatin1().constData());
}

} // namespace

QString shellBytes(const QString& path)
{
    return QString::fromLatin1(path.toUtf8());
}

QString quotedForShell(const QString& path)
{
    return QLatin1Char('"') + shellBytes(path) + QLatin1Char('"');
}

void keepUsersLocale()
{
    usersLocale = {qgetenv("LC_ALL"), qgetenv("LC_CTYPE")};
}

int runShell(const QString& command)
{
    if (!usersLocale)
        return run(command);
    const ChangedVariable all("LC_ALL", usersLocale->all);
    const ChangedVariable characters("LC_CTYPE", usersLocale->characters);
    return run(command);
}

int runShellInByteOrder(const QString& command)
{
    const ChangedVariable all("LC_ALL", "C");
    return run(command);
}
