#include "launch/pluginstart.h"

#include "files/programnames.h"
#include "platform/vncdisplay.h"
#include "platform/zscreen.h"

namespace
{

/// Tells programs that are started something; with an empty value nothing.
class ToldVariable
{
public:
    ToldVariable(const char* name, const QByteArray& value)
        : name_(name), isTold_(!value.isEmpty()), before_(qgetenv(name))
    {
        if (isTold_)
            qputenv(name, value);
    }
    ~ToldVariable()
    {
        if (isTold_ && before_.isNull())
            qunsetenv(name_);
        else if (isTold_)
            qputenv(name_, before_);
    }
    ToldVariable(const ToldVariable&) = delete;
    ToldVariable& operator=(const ToldVariable&) = delete;

private:
    const char* name_;
    bool isTold_;
    QByteArray before_;
};

} // namespace

int startPlugin(const ShellBytes& command)
{
    const ToldVariable place(ProgramNames::PlaceVariable, ZScreen::placeOnDisplay());
    const ToldVariable platform(
        "QT_QPA_PLATFORM", VncDisplay::isUsed() ? VncDisplay::platformForGuest() : QByteArray());
    return runShell(command);
}
