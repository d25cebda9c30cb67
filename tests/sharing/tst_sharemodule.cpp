#include "platform/keymap.h"
#include "tests/sharing/sharetest.h"
#include "tests/support/testmain.h"

#include <QRegularExpression>

namespace
{

/// Whether this process has the module open.
bool moduleIsOpen()
{
    QFile maps("/proc/self/maps");
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/sharing.so");
}

} // namespace

// Sharing is a module of its own, opened when a file is shared.
class tst_ShareModule : public ShareTest
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        ZModule::setFolder(QByteArrayLiteral(QUARN_MODULES));
        ShareTest::cleanup();
    }
    void nameThatIsNoTextIsDeclined_data()
    {
        QTest::addColumn<QString>("path");
        const QString folder = fixture_->files.path() + '/';
        QTest::newRow("a byte") << folder + QChar(0xdce4) + ".mp3";
        QTest::newRow("several") << folder + QString::fromUtf8("я") + QChar(0xdc80) + QChar(0xdcff);
        QTest::newRow("in the folder") << folder + QChar(0xdcff) + "/song.mp3";
        QTest::newRow("behind a whole pair")
            << folder + QString::fromUcs4(U"\U0001f3b5") + QChar(0xdcb5);
        QTest::newRow("zero") << folder + "song" + QChar(0) + ".mp3";
    }

    void nameThatIsNoTextIsDeclined()
    {
        QFETCH(QString, path);
        QVERIFY(!SHARE_Tool::shareByBt({"/song.mp3", "media/MP3"}, path, false));
        QVERIFY(nothingIsUp());
        QVERIFY(!moduleIsOpen());
    }

    void requestIsDeclinedWithoutTheModule()
    {
        ZModule::setFolder(QFile::encodeName(fixture_->files.path()));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module sharing: "));
        QVERIFY(!fixture_->share());
        fixture_->files.write("sharing.so", "not a module");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module sharing: "));
        QVERIFY(!fixture_->share());
        QVERIFY(nothingIsUp());
        QCOMPARE(ZScreen::instance()->active(), fixture_->main.get());
        QVERIFY(!moduleIsOpen());
    }

    void moduleIsOpenedWhenAFileIsShared()
    {
        QVERIFY(!moduleIsOpen());
        fixture_->addDevice("11:22:33:44:55:66", "Laptop");
        QVERIFY(fixture_->share());
        QVERIFY(moduleIsOpen());
        // On the one screen that the program has.
        QVERIFY(ZScreen::instance()->active() == deviceList());
        QCOMPARE(rows().size(), 1);
    }

    void nameOfAnyTextIsSent()
    {
        const QString name =
            QString::fromUtf8("я ") + QString::fromUcs4(U"\U0001f3b5") + QChar(0xfffd) + ".mp3";
        fixture_->files.write(name, QByteArray(1000, 'x'));
        fixture_->sendTo("Laptop", name);
        QTRY_VERIFY(fixture_->obex.exists(TransferPath));
        QCOMPARE(fixture_->obex.property(TransferPath, Transfer, "Filename").toString(),
                 fixture_->files.path(name));
        QTRY_COMPARE(shareBox()->percent(), 0);
    }

private:
};

QUARN_TEST_MAIN(tst_ShareModule)

#include "tst_sharemodule.moc"
