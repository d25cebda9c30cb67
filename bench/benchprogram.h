#pragma once

#include <QTemporaryDir>

#include <memory>

class FM;
class QDaemonApp;

/// The program with its main window, for benchmarks of commands: a work folder of its own with the
/// staged pictures, and a folder of files that both panels show.
class BenchProgram
{
public:
    BenchProgram(int argc, char** argv);
    ~BenchProgram();
    BenchProgram(const BenchProgram&) = delete;
    BenchProgram& operator=(const BenchProgram&) = delete;

    /// A path below the work folder or the folder of files.
    QString work(const QString& name) const { return workFolder_.filePath(name); }
    QString file(const QString& name) const { return files_.filePath(name); }
    /// Reads the tables and shows the main window.
    FM* start();
    /// Lists the folder of files in both panels and makes the entry of a name current in the first.
    void highlight(const QString& name) const;

private:
    std::unique_ptr<QDaemonApp> application_;
    QTemporaryDir workFolder_;
    QTemporaryDir files_;
};

/// Makes a folder with `folders` subfolders of `files` files each, all of the same content.
void makeTree(const QString& path, int folders, int files, int bytes);
/// The most memory that the process has used so far, MiB.
double peakMemory();
