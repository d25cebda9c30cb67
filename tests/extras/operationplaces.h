#pragma once

#include "extras/operation.h"
#include "tests/extras/operationloop.h"
#include "tests/tools/filesystems.h"

#include <QByteArrayList>

#include <optional>

/// A folder for sources, one for targets, and one for the journals of this process and its
/// children.
class OperationPlaces
{
public:
    enum Where {
        Together,     ///< on one file system, in memory, where thousands of runs are fast
        Apart,        ///< the source on the disk
        ApartInMemory ///< the source on a file system of a megabyte, where a test may mount; else
                      ///< on disk
    };

    explicit OperationPlaces(Where where = Together);

    QByteArray source(const QByteArray& name = {}) const;
    QByteArray target(const QByteArray& name = {}) const;
    QByteArray state() const { return near_.path("state"); }
    /// The names in the folder of journals.
    QList<QByteArray> journals() const;

    /// A request for entries of the source folder.
    OperationRequest request(OperationKind kind, const QByteArrayList& names) const;

private:
    OwnFolder near_;
    std::optional<SmallFileSystem> small_;
    std::optional<OwnFolder> far_;
};

/// Runs one without anything that could go wrong; the test fails if it did.
void runWell(const OperationRequest& request, Answer answer = Answer::Replace);

/// What a run could not do, a line for each: the name of the entry, the trouble and the error.
QByteArrayList toldLines(const Operation& operation);
QByteArray toldLine(const char* name, Trouble trouble, int error);

/// Gives all in a tree one time of change, in the past.
void ageAll(const QByteArray& path);
/// A small tree with an entry of every kind; one folder cannot be written.
void makeEveryKind(const QByteArray& path);
/// All that treeText() tells, and which names are of one file, what is a hole, extended attributes.
QByteArrayList wholeText(const QByteArray& path);
/// The lines of a tree without the times of its folders.
QByteArrayList withoutFolderTimes(QByteArrayList lines);
/// What is only in one of two texts, marked "-" and "+".
QByteArray differences(const QByteArrayList& expected, const QByteArrayList& now);
