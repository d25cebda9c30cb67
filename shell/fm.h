#pragma once

#include "extras/extrasmodule.h"
#include "files/entry.h"
#include "platform/zmainwidget.h"

#include <QPixmap>
#include <QStringList>

#include <optional>

class FileBrowserFtab;
class QCopChannel;
class TextInput;
class ZNavTabWidget;
class ZOptionsMenu;
class ZPicture;
class ZSoftKey;

/// The main window: two directory panels and the about page, the soft keys with their menus, the
/// keypad shortcuts, and the commands. Made once, by the start-up.
///
/// Each command is a slot, defined in the folder of its subject. Commands find their target through
/// getActiveFileName() and its siblings and re-list panels with setDir(curPath, curIndex).
class FM : public ZKbMainWidget
{
    Q_OBJECT

public:
    FM();
    ~FM() override;

    /// The page number that commands go by. While AboutPage is shown no panel is active.
    enum Page { Panel1 = 1, Panel2 = 2, AboutPage = 3 };
    int activePage() const { return activePage_; }
    /// The panel shown; nullptr on the about page.
    FileBrowserFtab* activePanel() const;
    FileBrowserFtab* panel(int page) const;

    static QString getFilePath(const QString& path);
    static QString getFileName(const QString& path);
    /// The full path of the active panel's current entry; null on the about page.
    QString getActiveFileName() const;
    /// The marked entries of the active panel, which thereby leaves multi-selection mode and is
    /// listed anew. Empty on the about page.
    QStringList getActiveFileNames();
    /// Whether the active panel is in multi-selection mode.
    bool getActiveMultiStat() const;
    /// What a command works on: the marked entries in multi-selection mode, else the current one.
    QStringList getActiveEntries();

    /// The extension by which a path is matched with plugins.
    static QString getMime(const QString& path);
    /// A path as a quoted piece of a shell command line, each of its bytes as one character. Empty,
    /// without quotes, for a text that stands for no path.
    static QString ExecFormat(const QString& path);
    /// Whether a plugin of that name is installed in the plugins folder.
    static bool searchPlugin(const QString& name);

    /// Deletes a file or a folder with all that is in it; a failure is shown. False only when there
    /// was nothing of that path.
    bool DeleteFile(const QString& path);
    /// Copies a file or folder into a folder (no "/" at its end): by the shell, or, while the
    /// modifier is held, file by file with a percentage.
    void copy(const QString& src, const QString& dstDir);
    /// Copies one plain file. False only when reading or writing failed, which is not shown.
    bool CopyFile(const QString& src, const QString& dst);
    static QString countSize(double bytes);
    /// Copies or moves one entry of the clipboard, with the questions that belong to it.
    void ChkCopy(const QString& src, const QString& dstDir);
    void ChkMove(const QString& src, const QString& dstDir);
    /// The bytes of all plain files below a folder, in 32 bits that wrap. Adds to dirCount (the
    /// folder included) and fileCount. Cancelled from the progress box it returns what it has.
    qint32 GetDirSize(const QString& folder);
    static QStringList GetFilesInFolder(const QString& folder);

    // Read by the commands and by tests.
    QString programDir;
    ZNavTabWidget* tabWidget() const { return tabs_; }
    ZSoftKey* softKey = nullptr;
    ZOptionsMenu* optionsMenu = nullptr;
    ZOptionsMenu* openWithMenu = nullptr;
    ZOptionsMenu* copyMenu = nullptr;
    ZOptionsMenu* bookmarkMenu = nullptr;
    QStringList bookmarkList;
    QStringList bookmarkPaths;
    TextInput* textInput = nullptr;
    /// Full paths of what Paste copies or moves.
    QStringList clipboardList;
    qint32 dirCount = 0;
    qint32 fileCount = 0;
    /// True while PhoneKey::Modifier is held and changes what keys do.
    bool modKeyHeld = false;
    /// 1 to 9: the plugin, counted from 1, that slot_OpenWith() is to use; 0: the menu's choice.
    int pendingPlugin = 0;

    /// Builds the soft keys, and the four menus. Menus that exist are replaced.
    void createSoftKeys();
    void createSoftKeysFtab();
    void createSoftKeysStab();

public slots:
    void slotCurrentChanged(QWidget* page);
    void slot_Copy();
    void slot_CopyTo();
    void slot_Move();
    void slot_MoveTo();
    void slot_MkDir();
    void slot_Delete();
    void slot_Rename();
    void slot_SendBt();
    void slot_Properties();
    void slot_Trash();
    void CloseProgramm();
    void slot_BookMark();
    void slot_AddBookMark();
    void LyraPlayer();
    void slot_OpenWith();
    void slot_ClickFile(bool picked);
    void slotQCopReceived(const QByteArray& message);
    /// The window manager asks to close the window: the exit question, unless a question is open.
    void slotCloseRequested();
    /// Asks about operations that were cut short, if a module is there for it.
    void offerUnfinished();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    struct KeyAction {
        int code;
        void (FM::*run)();
    };
    static const KeyAction PlainKeys[];
    static const KeyAction ModifiedKeys[];

    // Construction.
    void showStartBox();
    void loadTables();
    void LoadLang();
    void MimeConfig();
    void PluginConfig();
    void BookmarkConfig();
    void createTextInput();
    void createPanels();
    void createAboutPage();
    void connectSignals();
    void drawAbout(const ZPicture& logo);
    void fillOpenWithMenu(ZPicture& icon);
    void fillBookmarkMenu(ZPicture& icon);
    void insertAddBookmark(int position, const ZPicture& icon);
    void growBookmarkMenu();
    void addTab(QWidget* page, const char* icon);

    // What keys do.
    void holdModifier();
    void openWithDigit(int digit);
    void hideWindow();
    void playMusic();
    void previousTrack();
    void nextTrack();
    void showPlayer();
    void toggleFullScreen();
    void toggleFullInfo();
    void toggleMultiSelect();
    void showTestBox();
    void askExit();
    bool playerInstalled();
    void sendToPlayer(const char* message);

    // File operations.
    static void relist(FileBrowserFtab* panel);
    void relistBoth();
    void armPaste(const char* slot, const char* otherSlot);
    void paste(void (FM::*pasteOne)(const QString& src, const QString& dstDir));
    void copyByShell(const QString& src, const QString& dstDir);
    void copyBuiltIn(const QString& src, const QString& dstDir);
    void copyTree(const QString& src, const QString& dstDir);
    bool removeIfStill(const QString& path, const std::optional<EntryId>& asked);
    bool moveAfterQuestions(const QString& src, const QString& dstDir);
    void moveByTool(const QString& src, const QString& dstDir);
    QString folderSizeText(const QString& path, const QString& textSoFar);
    QString wideFolderSizeText(const QString& path, const QString& textSoFar);

    // The same by the module "extras".
    ExtrasModule* extrasOrError();
    void hearOf(ExtrasModule& module);
    void changedLate(const QStringList& folders);
    void relistChanged();
    void deleteSafely();
    void deleteToTrash();
    void pasteSafely(ExtrasModule::Kind kind, const QStringList& entries, const QString& folder);
    void runSafely(ExtrasModule::Kind kind, const QStringList& entries, const QString& folder,
                   bool wereMarked);

    ZNavTabWidget* tabs_ = nullptr;
    FileBrowserFtab* panels_[2] = {nullptr, nullptr};
    int activePage_ = Panel1;
    QWidget* aboutPage_ = nullptr;
    bool modifierIsDown_ = false; ///< from a press that the window got until the release
    QPixmap aboutPicture_;        ///< null until the page is first seen
    QStringList aboutTexts_;
    QStringList changedFolders_; ///< behind the scenes, and not listed since
    QCopChannel* channel_ = nullptr;
};

/// The main window, reachable from everywhere.
extern FM* quarn;
