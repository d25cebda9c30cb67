#pragma once

#include "files/filehandle.h"
#include "tests/extras/safescreens.h"
#include "tests/fileops/commandtest.h"

#include <QStringList>

#include <functional>
#include <memory>

/// Tests of commands on files in a program with a trash of its own.
class TrashCommandTest : public CommandTest
{
    Q_OBJECT

protected:
    using Log = CommandLog;

    /// What a user does, as soon as something is seen.
    struct Step {
        std::function<bool()> seen;
        std::function<void()> action;
    };
    static void follow(const QList<Step>& steps);

    /// The page that has the keys; nullptr if none has.
    static QWidget* pageWithKeys();
    /// Its rows: name|detail.
    static QStringList rowsWithKeys();
    /// A page with that many rows has the keys.
    static std::function<bool()> rows(int count);
    static bool messageHasKeys();
    /// The user has that many answers left, and the page has the keys again.
    std::function<bool()> unasked(int answers);

    static void leave();
    /// Chooses from the menu of the highlighted row.
    static std::function<void()> choosing(char digit);

    const ScratchFolder& files() const { return fixture_->files(); }
    FM* window() const { return fixture_->window(); }
    /// Deletes an entry of the left panel into the trash.
    void throwAway(const QString& name);
    /// Puts a folder with a file "in" into the trash of a data folder, as if thrown away from
    /// `path`.
    static void putFolder(const ScratchFolder& data, const QString& path);
    /// The names in the trash.
    QStringList trashed() const;

    std::unique_ptr<ScratchFolder> data_; ///< "Trash" is in it

protected slots:
    /// The list has the trashes of all file systems: who puts something there waits for the others.
    void initTestCase();
    void init();
    void cleanup();

private:
    FileHandle trashes_;
};
