#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What the launcher has done to the user's work folder after an upgrade. It leaves that in a file,
/// a line a thing, "kind text", for the program to tell: who looks at a phone does not see its
/// stderr.
struct UpgradeNotice {
    QString version;
    QString folder;       ///< where the package's own files are
    QStringList settings; ///< keys that the user's settings do not have
    QStringList added;    ///< paths in the work folder, as all below
    QStringList renewed;
    QStringList kept; ///< the user's own, in the place of which the package has others
    bool operator==(const UpgradeNotice&) const = default;
};

/// Several upgrades may stand below each other: of the version and the folder the last one counts,
/// what is named twice is once in it. Lines of no known kind do not count.
UpgradeNotice parsedNotice(const QByteArray& content);

/// What the box says, in the language of a language file. Of many names the first few.
QString noticeText(const UpgradeNotice& notice, const QString& languageFile);

/// The file that the environment names for this start, which is thereby taken out of it for
/// programs that are started. Null if there is none.
QString takeNoticeFile();

/// Removes the file and tells what was in it, in the message box of the main window. Nothing if the
/// file cannot be read or removed, or says nothing.
void showNotice(const QString& file);
