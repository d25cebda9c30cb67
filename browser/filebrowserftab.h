#pragma once

#include "platform/zlistbox.h"

#include <QDateTime>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <memory>

class EntryRows;

/// A directory panel: the list of one folder's entries with icons, and, in full-information mode,
/// sizes, dates and thumbnails. In multi-selection mode the rows have check boxes.
class FileBrowserFtab : public ZListBox
{
    Q_OBJECT

public:
    FileBrowserFtab(bool fullInfoMode, const QString& type, QWidget* parent, unsigned flags,
                    unsigned widgetClass);
    ~FileBrowserFtab() override;

    /// The folder listed: canonical, without a "/" at its end but for the root.
    QString curPath;
    /// The full path of the highlighted entry, or of the picked file; null while nothing is listed.
    QString curFile;
    /// The highlighted row, the back entry counted.
    int curIndex = 0;

    /// Lists a folder (the current one for an empty path) and makes row `index` current. An
    /// unreadable folder leaves the list empty and `curPath` as it was.
    void setDir(const QString& path, int index);
    /// Flips full-information mode; the rows follow with the next setDir().
    void setFullInf();
    /// Flips multi-selection mode; the rows follow with the next setDir().
    void switchMultiSelect();
    bool isMultiSelect() const { return multiSelect; }
    /// Lets letters and digits find entries from now on (ZListFind); digits not while
    /// `digitsAreTaken` says so. Call it once.
    void enableFinding(std::function<bool()> digitsAreTaken);
    /// How many entries are listed, the back entry not counted.
    int entryCount() const { return std::max(count() - backEntries(), 0); }
    /// The place of the highlighted entry among them, from 1 on; 0 for the back entry or none.
    int entryPosition() const { return std::max(currentItem() - backEntries() + 1, 0); }
    /// Full paths of the checked entries, in row order.
    QStringList getChkFileList() const;
    /// Lists the folder anew with the highlight on the entry that had it; if that is gone, on the
    /// first of those below it that is not. Marks stay on their entries, and on those of `more`
    /// (full paths) that are here. Without any, when there were some, multi-selection ends.
    void relistByName(const QStringList& more);
    /// Makes a folder inside `parent`. False if either text is empty or the file system refuses.
    static bool makedir(const QString& parent, const QString& name);
    /// A path up to and including its last "/".
    static QString getProgramDir(const QString& path);

    /// Fills a pixmap from a picture file through the process's pixmap cache; a missing file gives
    /// an empty one.
    static void loadPic(QPixmap& pixmap, const QString& path);
    static QString get_Mime(const QString& name);
    static QString fDate(const QDateTime& stamp);

signals:
    /// The panel moved to a folder. The path is the one asked for, not the canonical one.
    void picked(const QString& path);
    /// True: a file was chosen; false: the panel moved to a folder.
    void isFilePicked(bool file);

public slots:
    void itemHighlighted(int row);
    void itemSelected(int row);
    void LoadPreview();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QString entryName(int row) const;
    QByteArrayView entryNameBytes(int row) const;
    int backEntries() const { return hasBackEntry_ ? 1 : 0; }
    QString entryPath(int row) const;
    int rowOfFirst(const QStringList& names) const;
    void openFolder(const QString& path);
    void restartPreview();
    int pageLength();
    void pageUp();
    void pageDown();

    // Filling the list (listing.cpp).
    void addEntries(const QFont& ownFont);
    void applyFonts(QFont rowFont, int pixelSize);
    void sayWhyEmpty(const QString& text);
    void sayFolder();
    void addBackEntry();

    // One step of the thumbnail loader for a picture's row.
    void showPreview(int row, const QString& path);

    std::unique_ptr<EntryRows> entries_;
    bool hasBackEntry_ = false;
    bool multiSelect = false;
    QString itemFormat = QStringLiteral("%I%M");
    QTimer* previewTimer;
    int previewIndex = 0;
    bool previewIdle = true;
    int fullInfo;
    bool dirsOnly = false;
};
