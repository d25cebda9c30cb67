#include "plugins/execute/command.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QDir>

/// What is run for a file.
class tst_Command : public QObject
{
    Q_OBJECT

private slots:
    void commandSuitsTheFile_data();
    void commandSuitsTheFile();
    void filesThatCannotBeRunHaveAProblem_data();
    void filesThatCannotBeRunHaveAProblem();
    void itRunsInTheFolderOfTheFile();
};

void tst_Command::commandSuitsTheFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<unsigned>("mode");
    QTest::addColumn<QStringList>("command");
    const QStringList itself{"FILE"};
    QTest::newRow("program") << "a"
                             << QByteArray("\x7f"
                                           "ELF\0",
                                           5)
                             << 0755U << itself;
    QTest::newRow("script") << "a" << QByteArray("#!/bin/x\n") << 0755U << itself;
    QTest::newRow("script of a known type")
        << "a.sh" << QByteArray("#!/bin/x\n") << 0755U << itself;
    QTest::newRow("script that may not be executed")
        << "a.sh" << QByteArray("#!/bin/x\n") << 0644U << QStringList{"sh", "FILE"};
    QTest::newRow("script without interpreter")
        << "a.bash" << QByteArray("echo\n") << 0755U << QStringList{"bash", "FILE"};
    QTest::newRow("of no type and without interpreter")
        << "a" << QByteArray("echo\n") << 0755U << QStringList{"sh", "FILE"};
    QTest::newRow("Python") << "A.PY" << QByteArray("1\n") << 0644U
                            << QStringList{"python3", "-u", "FILE"};
    QTest::newRow("unreadable program") << "a" << QByteArray("x") << 0111U << itself;
    QTest::newRow("name like an option")
        << "-c.sh" << QByteArray("x") << 0644U << QStringList{"sh", "FILE"};
}

void tst_Command::commandSuitsTheFile()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(unsigned, mode);
    QFETCH(QStringList, command);
    const ScratchFolder folder;
    folder.write(name, content);
    folder.setMode(name, mode);
    command.replaceInStrings("FILE", folder.path(name));
    const Command found = Command::forFile(folder.path(name));
    QCOMPARE(found.problem, QString());
    QCOMPARE(QStringList(found.program) + found.arguments, command);
}

void tst_Command::filesThatCannotBeRunHaveAProblem_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("problem");
    QTest::newRow("missing") << "missing.sh"
                             << "There is no such file.";
    QTest::newRow("folder") << "folder"
                            << "This is a folder.";
    QTest::newRow("FIFO") << "fifo.sh"
                          << "This is not a regular file.";
    QTest::newRow("text") << "text.txt"
                          << "This file is not executable.";
}

void tst_Command::filesThatCannotBeRunHaveAProblem()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.makeFolder("folder");
    folder.makeFifo("fifo.sh");
    folder.write("text.txt", "#!/bin/sh\n");
    folder.setMode("text.txt", 0644);
    QTEST(Command::forFile(folder.path(name)).problem, "problem");
    QCOMPARE(Command::forFile(QString()).problem, QString("No file was given."));
}

void tst_Command::itRunsInTheFolderOfTheFile()
{
    const ScratchFolder folder;
    folder.write("in/a.sh", "x");
    QCOMPARE(Command::forFile(folder.path("in/a.sh")).folder, folder.path("in"));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const Command relative = Command::forFile("in/a.sh");
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(relative.folder, folder.path("in"));
    QCOMPARE(relative.arguments, QStringList(folder.path("in/a.sh")));
}

QUARN_TEST_MAIN(tst_Command)
#include "tst_command.moc"
