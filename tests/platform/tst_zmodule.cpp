#include "platform/keymap.h"
#include "platform/zmodule.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QRegularExpression>

#include <memory>
#include <sys/stat.h>

class tst_ZModule : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        files_ = std::make_unique<ScratchFolder>();
        ZModule::setFolder(QByteArrayLiteral(QUARN_TEST_MODULES));
    }
    void cleanup()
    {
        ZModule::setFolder({});
        ZModule::setExecutable({});
    }

    void modulesAreBesideTheExecutable()
    {
        ZModule::setFolder({});
        const QFileInfo executable("/proc/self/exe");
        QCOMPARE(ZModule::folder(),
                 QFile::encodeName(QFileInfo(executable.symLinkTarget()).absolutePath()) +
                     "/modules");
    }

    void moduleUsesTheToolkitOfTheProgram()
    {
        const auto function = reinterpret_cast<const KeyMap* (*)()>(ZModule::open("answer"));
        QVERIFY(function != nullptr);
        QCOMPARE(function(), &KeyMap::instance());
    }

    void moduleIsOpenedOnce()
    {
        QVERIFY(ZModule::open("answer") != nullptr);
        QVERIFY(ZModule::open("answer") == ZModule::open("answer"));
    }

    void moduleThatWillNotOpenIsNamed_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"missing", "text", "empty", "folder", "lacking", "renamed"})
            QTest::newRow(name) << name;
    }

    void moduleThatWillNotOpenIsNamed()
    {
        QFETCH(QString, name);
        files_->write("text.so", "This is no library.\n");
        files_->write("empty.so", "");
        files_->makeFolder("folder.so");
        // One lacks a function that it calls, the other has none of the name that is asked for.
        const QString modules = QStringLiteral(QUARN_TEST_MODULES);
        QVERIFY(QFile::copy(modules + "/lacking.so", files_->path("lacking.so")));
        QVERIFY(QFile::copy(modules + "/answer.so", files_->path("renamed.so")));
        ZModule::setFolder(QFile::encodeName(files_->path()));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module " + name + ": ."));
        QVERIFY(ZModule::open(name.toLatin1().constData()) == nullptr);
    }

    void moduleThatCameLaterIsOpened()
    {
        ZModule::setFolder(QFile::encodeName(files_->path()));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module answer: "));
        QVERIFY(ZModule::open("answer") == nullptr);
        QVERIFY(QFile::copy(QStringLiteral(QUARN_TEST_MODULES "/answer.so"),
                            files_->path("answer.so")));
        QVERIFY(ZModule::open("answer") != nullptr);
    }

    void moduleInAFolderWhoseNameIsNoTextIsOpened()
    {
        const QByteArray folder = QFile::encodeName(files_->path()) + "/\xef\xbb\xbf\xff";
        QCOMPARE(mkdir(folder.constData(), 0700), 0);
        files_->makeLink("answer.so", QStringLiteral(QUARN_TEST_MODULES "/answer.so"));
        const QByteArray link = QFile::encodeName(files_->path("answer.so"));
        QCOMPARE(rename(link.constData(), (folder + "/answer.so").constData()), 0);
        ZModule::setFolder(folder);
        QVERIFY(ZModule::open("answer") != nullptr);
    }

    void upgradedProgramOpensNoModuleOfTheNewerVersion()
    {
        runFrom("quarn (deleted)");
        files_->write("quarn", "the newer one");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module answer: .* start it anew"));
        QVERIFY(ZModule::open("answer") == nullptr);
        QVERIFY(ZModule::needsRestart("answer"));
    }

    void moduleThatIsOpenServesOnAfterAnUpgrade()
    {
        runFrom("quarn");
        QVERIFY(!ZModule::needsRestart("answer"));
        const QFunctionPointer function = ZModule::open("answer");
        QVERIFY(function != nullptr);
        runFrom("quarn (deleted)");
        files_->write("quarn", "the newer one");
        QVERIFY(QFile::remove(files_->path("modules/answer.so")));
        QVERIFY(ZModule::open("answer") == function);
        QVERIFY(!ZModule::needsRestart("answer"));
    }

    void programThatWasRemovedIsNotSaidToBeUpgraded()
    {
        runFrom("quarn (deleted)");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module answer: "));
        QVERIFY(ZModule::open("answer") == nullptr);
        QVERIFY(!ZModule::needsRestart("answer"));
    }

    void programWhoseNameEndsLikeOneThatIsGoneOpensModules()
    {
        files_->write("quarn (deleted)", "this one");
        runFrom("quarn (deleted)");
        QVERIFY(ZModule::open("answer") != nullptr);
        QVERIFY(!ZModule::needsRestart("answer"));
    }

private:
    /// As if the program were this file of the scratch folder, with the module beside it.
    void runFrom(const QString& name)
    {
        if (!QFile::exists(files_->path("modules/answer.so"))) {
            files_->makeFolder("modules");
            QVERIFY(QFile::copy(QStringLiteral(QUARN_TEST_MODULES "/answer.so"),
                                files_->path("modules/answer.so")));
        }
        ZModule::setFolder({});
        ZModule::setExecutable(QFile::encodeName(files_->path(name)));
    }

    std::unique_ptr<ScratchFolder> files_;
};

QUARN_TEST_MAIN(tst_ZModule)

#include "tst_zmodule.moc"
