#pragma once

#include <QString>

// What the user sets in "fm.cfg", read once at start.

/// The program's own folder, normally ending with "/". Null while the settings gave none.
extern QString work_folder;
/// The folders that the panels show first. May be empty.
extern QString path_tab1;
extern QString path_tab2;
/// The language file's base name. May be empty.
extern QString lang;
extern bool full_scr;
/// One of ZMainWidget::HeaderType.
extern int header_type;
/// Whether the panels show the line with size and date.
extern bool full_inf;

/// What can be left out, switched by the group "Extras". Each is off, or 0, unless the file says
/// otherwise.
struct Extras {
    bool find = false;   ///< letters and digits find rows of the panels
    bool status = false; ///< the soft-key bar shows the folder and the place in it
    int theme = 0;       ///< 0 light, 1 dark
    bool motion = false; ///< long names glide, menus rise
    bool safe = false;   ///< copy, move and delete by an engine of the program's own
    bool trash = false;  ///< delete moves to the trash
    bool operator==(const Extras&) const = default;
};
extern Extras extras;

/// Fills all of the above from "fm.cfg" in `programDir` (which ends with "/", or is empty for the
/// current folder). A key that is missing, or the whole file, leaves its setting empty, 0 or false.
/// A work folder given as an empty text counts as not given. An extra whose value is no number of
/// its range is 0 and named on stderr; so are keys of its group that nobody knows.
void readConfig(const QString& programDir);
