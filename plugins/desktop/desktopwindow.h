#pragma once

#include "plugins/desktop/handover.h"
#include "plugins/support/pluginwindow.h"

/// Says why the desktop has not opened a file, and what one can do.
class DesktopWindow : public PluginWindow
{
    Q_OBJECT

public:
    /// `outcome` is not Done.
    DesktopWindow(const QString& file, Handover outcome);

    const QString& problem() const { return problem_; }
    const QString& advice() const { return advice_; }

private:
    class Message;

    QString problem_;
    QString advice_;
};
