#pragma once

#include "tests/support/scratchfolder.h"

#include <memory>

class FM;
class FileBrowserFtab;
class QDaemonApp;

/// The whole program but its event loop, in a test's process: globals as at a start, a work folder
/// of its own with the staged pictures, and the main window. One at a time; all is taken back when
/// it goes.
///
/// Set up the work folder and the settings (globals of shell/settings.h) first, then call start().
class Program
{
public:
    /// `medium`: where the folder that both panels show lies.
    explicit Program(ScratchFolder::Medium medium = ScratchFolder::Disk);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// The work folder; "res" in it leads to the staged pictures. Its path with a "/" at the end is
    /// the setting work_folder.
    const ScratchFolder& workFolder() const { return workFolder_; }
    /// The folder that both panels show at the start unless the settings are changed.
    const ScratchFolder& files() const { return files_; }

    /// Makes and shows the main window and waits until the start box is gone.
    FM* start();
    FM* window() const;
    /// The panel of tab 1 or 2.
    FileBrowserFtab* panel(int page) const;
    /// The names in a panel's rows, from top to bottom.
    QStringList rows(int page) const;
    /// Makes the row with a name current; fails the test if there is none.
    void highlight(int page, const QString& name) const;

private:
    ScratchFolder workFolder_;
    ScratchFolder files_;
    std::unique_ptr<QDaemonApp> application_;
};
