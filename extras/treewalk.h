#pragma once

#include "extras/foldercursor.h"

#include <QByteArray>

#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

/// Walks an entry and all that is below it, one step at a time, links never followed. In a folder
/// first come all that are no folders, as the system lists them, then its folders one by one; so
/// memory holds no more than the names of the folders in the folders on the way. Entries may be
/// taken away as they come.
class TreeWalk
{
public:
    enum class Step {
        Entry,  ///< something that is no folder
        Enter,  ///< a folder; its contents come next unless skip() is called
        Leave,  ///< a folder whose contents have all come; for each Enter that was not skipped
        Failed, ///< error() tells why nothing (more) comes from path(); of a folder Leave still
                ///< comes
        Ended
    };
    /// What is asked about each entry that is no folder: all, or the kind alone.
    enum class Facts { All, Kind };

    /// Walks what is at `path` below the top of the cursor, which it moves and does not own.
    TreeWalk(FolderCursor& cursor, const QByteArray& path, Facts facts = Facts::All);
    ~TreeWalk();

    Step next();
    /// After Enter: stays out of the folder.
    void skip();
    /// After Leave: reads the folder once more, and Leave comes again.
    void readAgain();

    /// Of the entry that the last step is about: its path below the top and what the system says.
    const QByteArray& path() const { return path_; }
    const struct stat& info() const { return info_; }
    int error() const { return error_; }
    /// The open folder that it is in, -1 with errno set if that is gone; moves the cursor there.
    int folder();

private:
    struct Level {
        QByteArray path;
        struct stat info = {};
        QByteArray folders; ///< names in it that are still to be entered, each ended by a zero
        qsizetype nextFolder = 0;
    };
    struct CloseFolder {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    Step first();
    Step open();
    Step read();
    Step nextFolder();
    Step leave();
    Step failed(int error);
    bool ask(int folder, const char* name);

    FolderCursor& cursor_;
    Facts facts_;
    enum class State { First, Entered, Reading, Descending, Left, Ended } state_ = State::First;
    std::vector<Level> levels_;
    std::unique_ptr<DIR, CloseFolder> reader_;
    QByteArray path_;
    struct stat info_ = {};
    int error_ = 0;
};
