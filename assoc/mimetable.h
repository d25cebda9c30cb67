#pragma once

#include <QString>

#include <vector>

/// One association of a file-name extension with plugins and an icon.
struct mime_struct {
    QString ext; ///< without the dot, upper case, up to 20 characters
    int plugin_num = 0;
    int icon_num = 0;
};

/// The icon number of pictures, for which the panel makes thumbnails.
inline constexpr int PictureIcon = 2;

/// The table in file order, filled once at start, and its size.
extern std::vector<mime_struct> mimes;
extern int mime_nums;

/// One line of the file: columns 0-2 the icon number, 4-5 the plugin number, 7-26 the extension.
/// What a short line lacks is 0 or empty.
mime_struct parseMimeLine(const QString& line);

/// Appends the lines of a file to the table. Lines that end before the extension are skipped; a
/// file that is missing or unreadable adds nothing.
void loadMimes(const QString& file);

/// The extension by which a path is matched: what follows its last ".", in upper case; "unknown" if
/// it has none.
QString mimeOf(const QString& path);
