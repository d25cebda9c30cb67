#pragma once

#include "assoc/mimetable.h"
#include "tests/support/scratchfolder.h"

#include <QStringList>

#include <memory>

class FileBrowserFtab;
class QTimer;
class ZMainWidget;

/// One directory panel alone on the screen, listing nothing at first, and a work folder whose
/// pictures are 16 x 16 squares of one colour each. The MIME table is empty until a test fills it.
class PanelFixture
{
public:
    explicit PanelFixture(bool fullInfo = false);
    ~PanelFixture();
    PanelFixture(const PanelFixture&) = delete;
    PanelFixture& operator=(const PanelFixture&) = delete;

    static constexpr int IconSide = 16;

    /// Adds an association of the table; its icon is drawn in the work folder unless `drawn` is
    /// false.
    void associate(const QString& extension, int icon, bool drawn = true) const;
    /// Draws a picture of the work folder's "res/img/", in a colour of its own.
    void drawIcon(const QString& name) const;

    const ScratchFolder& workFolder() const { return workFolder_; }
    /// A folder to list.
    const ScratchFolder& files() const { return files_; }
    /// Writes that many files, f0000 and so on.
    void makeFiles(int count) const;
    FileBrowserFtab* panel() const { return panel_; }
    FileBrowserFtab* operator->() const { return panel_; }
    /// The thumbnail loader's timer.
    QTimer* previewTimer() const;

    /// The names in the rows, from top to bottom.
    QStringList names() const;
    /// Whether the panel's own fields say what its rows show.
    bool fieldsFollow() const;
    /// The row of a name; -1 if there is none.
    int row(const QString& name) const;
    /// A row's second text; null if it has none.
    QString detail(const QString& name) const;
    /// Which picture of "res/img/" a row shows: "browser/0/folder.png". "none" if it is empty,
    /// "other" if it is none of those drawn.
    QString icon(const QString& name) const;

private:
    ScratchFolder workFolder_;
    ScratchFolder files_;
    std::unique_ptr<ZMainWidget> window_;
    FileBrowserFtab* panel_ = nullptr;
};

/// What a panel told, in order: "isFilePicked(false)", "picked(/a/b)".
class PanelSignals
{
public:
    explicit PanelSignals(const PanelFixture& fixture);

    const QStringList& all() const { return *told_; }
    /// The panel's folder at the time of each signal.
    const QStringList& folders() const { return *folders_; }

private:
    std::shared_ptr<QStringList> told_ = std::make_shared<QStringList>();
    std::shared_ptr<QStringList> folders_ = std::make_shared<QStringList>();
};
