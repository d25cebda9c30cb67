#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QObject;

/// What the module "extras" does for the main window. Its screens come up over the window, and its
/// functions return when the user has left them; the event loop runs meanwhile. One runs at a time:
/// called while another one does, a function does nothing.
class ExtrasModule
{
public:
    enum class Kind { Copy, Move, Delete };

    /// How an operation ended.
    struct Outcome {
        /// False when the user left it, or nothing could be done, before anything was changed.
        bool begun = false;
        /// Those of its sources that are not done, or not wholly.
        QStringList left;
    };

    /// Copies or moves entries into a folder, or deletes them, with all questions, the progress and
    /// a list of what could not be done. Paths are absolute. To delete `folder` is empty.
    virtual Outcome run(Kind kind, const QStringList& sources, const QString& folder) = 0;

    /// Asks what is to become of each operation that a crash or a power cut has ended, and does
    /// that. True when files may have changed.
    virtual bool offerUnfinished() = 0;

    /// Moves entries to the trash, with the question before, the progress and a list of what could
    /// not be done. Those that have no trash are deleted, if the user agrees to that. Paths are
    /// absolute.
    virtual Outcome throwAway(const QStringList& sources) = 0;

    /// Shows what is in the trash until the user leaves it. What nobody knows the place of can be
    /// restored to `folder`; not if that is empty. True when files elsewhere may have changed.
    virtual bool showTrash(const QString& folder) = 0;

    /// What was cancelled may come to its end behind the scenes, when a function has returned: then
    /// the event loop calls `changed` with the folders that it worked in, as long as the receiver
    /// lives. There is one receiver.
    virtual void setReceiver(QObject* receiver,
                             const std::function<void(const QStringList& folders)>& changed) = 0;

protected:
    ~ExtrasModule() = default;
};

/// The module's function, extras_module(): its one object, which lives as long as the process.
using ExtrasModuleFunction = ExtrasModule* (*)();
