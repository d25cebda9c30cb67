#include "platform/keymap.h"
#include "tests/sharing/sharetest.h"
#include "tests/support/testmain.h"

namespace
{

/// The exchange service on a bus of its own, which can come to harm.
struct OtherService {
    explicit OtherService(ShareFixture& fixture) : fixture_(fixture)
    {
        service.awaitStart();
        ShareFixture::useBuses(fixture.system.address(), bus.address());
    }

    /// Up to a transfer that the service has queued.
    void startTransfer()
    {
        fixture_.sendTo();
        QTRY_VERIFY(service.exists(TransferPath));
        QTRY_COMPARE(shareBox()->percent(), 0);
    }

    PrivateBus bus;
    MockService service{bus, QStringLiteral("org.bluez.obex"), QStringLiteral(QUARN_OBEX_TEMPLATE)};

private:
    ShareFixture& fixture_;
};

} // namespace

// A device was chosen: how the file goes there, and every way in which it does not.
class tst_ShareTransfer : public ShareTest
{
    Q_OBJECT

private slots:
    void fileIsSentToTheChosenDevice()
    {
        fixture_->sendTo();
        QVERIFY(deviceList() == nullptr);
        QTRY_VERIFY(obex().exists(TransferPath));
        const QString session = QStringLiteral("org.bluez.obex.Session1");
        QCOMPARE(obex().property(SessionPath, session, "Destination").toString(),
                 QString("11:22:33:44:55:66"));
        QCOMPARE(obex().property(SessionPath, session, "Source"),
                 fixture_->bluez.property(AdapterPath, Adapter, "Address"));
        QCOMPARE(obex().property(TransferPath, Transfer, "Filename").toString(),
                 fixture_->files.path("song.mp3"));
        fixture_->updateTransfer("complete", 1000);
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 was sent to Laptop."));
        QTRY_VERIFY(!obex().exists(SessionPath));
        pressKey(PhoneKey::Return);
        QVERIFY(nothingIsUp());
    }

    void searchEndsBeforeTheConnectionIsMade()
    {
        fixture_->addDevice("11:22:33:44:55:66", "Laptop");
        QVERIFY(fixture_->share());
        QTRY_VERIFY(fixture_->isSearching());
        obex().pause();
        pressKey(PhoneKey::Return);
        QTRY_VERIFY(!fixture_->isSearching());
        obex().resume();
        QTRY_COMPARE(fixture_->system.guests(), 1);
    }

    void progressFollowsTheService_data()
    {
        QTest::addColumn<qulonglong>("sent");
        QTest::addColumn<qulonglong>("size");
        QTest::addColumn<int>("percent");
        QTest::newRow("begun") << 1ULL << 1000ULL << 0;
        QTest::newRow("half") << 500ULL << 1000ULL << 50;
        QTest::newRow("all but the end") << 999ULL << 1000ULL << 99;
        QTest::newRow("all") << 1000ULL << 1000ULL << 100;
        QTest::newRow("more than all") << 2000ULL << 1000ULL << 100;
        QTest::newRow("an enormous file") << (1ULL << 62) << ~(1ULL << 63) << 50;
        QTest::newRow("numbers beyond sense") << ~0ULL << 1000ULL << 0;
    }

    void progressFollowsTheService()
    {
        QFETCH(qulonglong, sent);
        QFETCH(qulonglong, size);
        QFETCH(int, percent);
        fixture_->startTransfer();
        fixture_->updateTransfer("active", 250);
        QTRY_COMPARE(shareBox()->percent(), 25);
        const QImage before = shareBox()->picture();
        obex().update(TransferPath, Transfer, {{"Transferred", sent}, {"Size", size}});
        QTRY_COMPARE(shareBox()->percent(), percent);
        QCOMPARE(shareBox()->text(), QString("Sending song.mp3 to Laptop..."));
        QVERIFY(shareBox()->picture() != before);
    }

    void sizeThatIsNotKnownShowsNoPercentage()
    {
        fixture_->startTransfer();
        obex().update(TransferPath, Transfer, {{"Size", 0ULL}, {"Transferred", 5ULL}});
        QTRY_COMPARE(shareBox()->percent(), -1);
        QVERIFY(!shareBox()->isResult());
    }

    void smallFileIsThroughBeforeItsTransferIsKnown()
    {
        obex().update(ClientPath, Client, {{"Instant", true}});
        fixture_->sendTo();
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 was sent to Laptop."));
    }

    void deviceMayRefuseTheFile()
    {
        fixture_->startTransfer();
        fixture_->updateTransfer("active", 1000);
        fixture_->updateTransfer("error", 1000);
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("Laptop did not accept song.mp3."));
        QTRY_VERIFY(!obex().exists(SessionPath));
    }

    void connectionMayFail_data()
    {
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("text");
        const QString obexError = "org.bluez.obex.Error.Failed";
        const QString failed = "song.mp3 could not be sent.";
        const QString refused = "Laptop did not accept song.mp3.";
        const auto greeting = [](int code) {
            return QString("OBEX Connect failed with 0x%1").arg(code, 2, 16, QChar('0'));
        };
        QTest::newRow("not there") << obexError << "Unable to find service record"
                                   << failed + "\nUnable to find service record";
        QTest::newRow("forbidden") << obexError << greeting(0x43) << refused;
        QTest::newRow("unauthorized") << obexError << greeting(0x41) << refused;
        QTest::newRow("not done") << obexError << greeting(0x53) << failed + '\n' + greeting(0x53);
        QTest::newRow("no reason") << obexError << "" << failed;
        QTest::newRow("words of the bus") << "org.freedesktop.DBus.Error.NoReply"
                                          << "Message recipient disconnected" << failed;
    }

    void connectionMayFail()
    {
        QFETCH(QString, error);
        QFETCH(QString, reason);
        QFETCH(QString, text);
        obex().mock(
            ClientPath, "AddMethod",
            {Client, "CreateSession", "sa{sv}", "o",
             QString("raise dbus.exceptions.DBusException('%1', name='%2')").arg(reason, error)});
        fixture_->sendTo();
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), text);
    }

    void transferThatBreaksOffHasFailed()
    {
        fixture_->startTransfer();
        fixture_->updateTransfer("active", 70000);
        fixture_->updateTransfer("error", 70000);
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 could not be sent."));
    }

    /// The service takes the session away with the device. What it tells of that may come late.
    void deviceMayVanish_data()
    {
        QTest::addColumn<bool>("error");
        QTest::addColumn<bool>("removal");
        QTest::newRow("with an error and a removal") << true << true;
        QTest::newRow("with an error") << true << false;
        QTest::newRow("with a removal") << false << true;
    }

    void deviceMayVanish()
    {
        QFETCH(bool, error);
        QFETCH(bool, removal);
        fixture_->startTransfer();
        QString code;
        if (error)
            code += "objects[args[0]].UpdateProperties('org.bluez.obex.Transfer1', "
                    "{'Status': dbus.String('error')});";
        if (removal)
            code += "objects[args[1]].object_manager_emit_removed(args[1]);";
        // In one go, as the service does it.
        obex().mock(ClientPath, "AddMethod",
                    {Client, "Vanish", "os", "",
                     code + "self.RemoveObject(args[0]); self.RemoveObject(args[1])"});
        obex().call(ClientPath, Client, "Vanish",
                    {QVariant::fromValue(BusPath{TransferPath}), SessionPath});
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 could not be sent."));
    }

    void fileMayVanishBeforeItIsSent()
    {
        fixture_->addDevice("11:22:33:44:55:66", "Laptop");
        QVERIFY(fixture_->share());
        QVERIFY(QFile::remove(fixture_->files.path("song.mp3")));
        pressKey(PhoneKey::Return);
        QTRY_VERIFY(shareBox() != nullptr && shareBox()->isResult());
        QCOMPARE(shareBox()->text(),
                 QString("song.mp3 could not be sent.\nNo such file or directory"));
        QTRY_VERIFY(!obex().exists(SessionPath));
    }

    void fileThatTakesTheNameIsNotSent_data()
    {
        QTest::addColumn<bool>("isLink");
        QTest::newRow("file") << false;
        QTest::newRow("link to another") << true;
    }

    void fileThatTakesTheNameIsNotSent()
    {
        QFETCH(bool, isLink);
        fixture_->addDevice("11:22:33:44:55:66", "Laptop");
        QVERIFY(fixture_->share());
        const ScratchFolder& files = fixture_->files;
        files.write("private", "nobody's business");
        QVERIFY(QFile::rename(files.path("song.mp3"), files.path("meant.mp3")));
        if (isLink)
            files.makeLink("song.mp3", "private");
        else
            files.write("song.mp3", "nobody's business");
        pressKey(PhoneKey::Return);
        QTRY_VERIFY(shareBox() != nullptr && shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 could not be sent."));
        QVERIFY(!obex().exists(TransferPath));
        QTRY_VERIFY(!obex().exists(SessionPath));
        QVERIFY(QFile::remove(files.path("song.mp3")));
        QVERIFY(QFile::rename(files.path("meant.mp3"), files.path("song.mp3")));
    }

    void rightSoftKeyCancelsTheTransfer()
    {
        fixture_->startTransfer();
        for (const int key : {PhoneKey::Return, PhoneKey::SoftLeft, PhoneKey::Up}) {
            pressKey(key);
            QVERIFY(!shareBox()->isResult());
        }
        obex().pause();
        pressKey(PhoneKey::SoftRight);
        QVERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("Sending was cancelled."));
        obex().resume();
        QTRY_VERIFY(!obex().exists(SessionPath));
        QTRY_COMPARE(fixture_->session.guests(), 1);
        QCOMPARE(shareBox()->text(), QString("Sending was cancelled."));
    }

    void deviceIsToldOfACancelledTransfer()
    {
        fixture_->startTransfer();
        // Keeps the transfer for a look at it.
        obex().mock(ClientPath, "AddMethod", {Client, "RemoveSession", "o", "", ""});
        pressKey(PhoneKey::SoftRight);
        QTRY_COMPARE(obex().calls(ClientPath, "RemoveSession"), 1);
        QCOMPARE(obex().calls(TransferPath, "Cancel"), 1);
    }

    void keyThatCancelsDoesNotCloseTheResultWhileItIsHeld()
    {
        fixture_->startTransfer();
        holdKey(PhoneKey::SoftRight);
        repeatKey(PhoneKey::SoftRight);
        QVERIFY(shareBox()->isResult());
        releaseKey(PhoneKey::SoftRight);
        QVERIFY(shareBox() != nullptr);
    }

    void tapOnTheKeyBarCancels()
    {
        fixture_->startTransfer();
        tap(shareBox(), {110, 40});
        QVERIFY(!shareBox()->isResult());
        tap(shareBox(), {200, shareBox()->height() - 8});
        QVERIFY(shareBox()->isResult());
        QTRY_VERIFY(!obex().exists(SessionPath));
    }

    void connectingCanBeCancelled()
    {
        obex().pause();
        fixture_->sendTo();
        QCOMPARE(shareBox()->text(), QString("Connecting to Laptop..."));
        QCOMPARE(shareBox()->percent(), -1);
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(shareBox()->text(), QString("Sending was cancelled."));
        // The service ends what it does for a caller that has gone.
        QTRY_COMPARE(fixture_->session.guests(), 1);
        obex().resume();
    }

    void closingTheResultEndsWaitingForTheService()
    {
        fixture_->startTransfer();
        obex().pause();
        pressKey(PhoneKey::SoftRight);
        pressKey(PhoneKey::SoftRight);
        QVERIFY(nothingIsUp());
        QTRY_COMPARE(fixture_->session.guests(), 1);
        obex().resume();
        QTRY_VERIFY(!obex().exists(SessionPath));
    }

    void resultIsClosedByAnyKey_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Return") << int(PhoneKey::Return);
        QTest::newRow("left soft key") << int(PhoneKey::SoftLeft);
        QTest::newRow("right soft key") << int(PhoneKey::SoftRight);
        QTest::newRow("arrow") << int(PhoneKey::Down);
        QTest::newRow("digit") << int('5');
        QTest::newRow("hide") << int(PhoneKey::Hide);
        QTest::newRow("a tap") << 0;
    }

    void resultIsClosedByAnyKey()
    {
        QFETCH(int, key);
        fixture_->startTransfer();
        fixture_->updateTransfer("complete", 1000);
        QTRY_VERIFY(shareBox()->isResult());
        repeatKey(PhoneKey::Down);
        QVERIFY(shareBox() != nullptr);
        if (key == 0)
            tap(shareBox(), {10, 10});
        else
            pressKey(key);
        QVERIFY(nothingIsUp());
        QCOMPARE(ZScreen::instance()->active(), fixture_->main.get());
    }

    void nextFileCanBeSentAtOnce()
    {
        fixture_->startTransfer();
        fixture_->updateTransfer("complete", 1000);
        QTRY_VERIFY(shareBox()->isResult());
        QVERIFY(!fixture_->share());
        pressKey(PhoneKey::Return);
        QVERIFY(fixture_->share());
        pressKey(PhoneKey::Return);
        QTRY_VERIFY(obex().exists(TransferPath));
        fixture_->updateTransfer("complete", 1000);
        QTRY_VERIFY(shareBox() != nullptr && shareBox()->isResult());
    }

    void hiddenWindowDoesNotStopTheTransfer()
    {
        fixture_->startTransfer();
        fixture_->main->hide();
        ZScreen::instance()->window()->hide();
        fixture_->updateTransfer("active", 500);
        const ShareScreen box = screenCalled("ShareBox");
        QTRY_COMPARE(box->percent(), 50);
        fixture_->updateTransfer("complete", 1000);
        QTRY_VERIFY(box->isResult());
        ZScreen::instance()->window()->show();
        fixture_->main->show();
        QVERIFY(box->isVisible());
        QVERIFY(ZScreen::instance()->active() == box);
        pressKey(PhoneKey::Return);
        QVERIFY(nothingIsUp());
        QCOMPARE(ZScreen::instance()->active(), fixture_->main.get());
    }

    void longAndHostileNamesFitTheBox()
    {
        fixture_->sendTo(QString(300, 'W') + "\n%1%2<b>\x1b");
        QTRY_VERIFY(obex().exists(TransferPath));
        QTRY_COMPARE(shareBox()->percent(), 0);
        fixture_->updateTransfer("complete", 1000);
        QTRY_VERIFY(shareBox()->isResult());
        QVERIFY(ZScreen::instance()->rect().contains(shareBox()->geometry()));
        QVERIFY(shareBox()->text().size() < 120);
        QVERIFY(shareBox()->text().contains("%1%2<b>"));
        QVERIFY(!shareBox()->text().contains('\n'));
        QVERIFY(shareBox()->text().contains("song.mp3"));
    }

    void serviceMayDieHalfWay()
    {
        MockService service(fixture_->system, "org.bluez.obex", QUARN_OBEX_TEMPLATE);
        service.awaitStart();
        ShareFixture::useBuses(fixture_->system.address(), fixture_->system.address());
        fixture_->sendTo();
        QTRY_VERIFY(service.exists(TransferPath));
        QTRY_COMPARE(shareBox()->percent(), 0);
        service.end();
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 could not be sent."));
        QTRY_COMPARE(fixture_->system.guests(), 1);
    }

    void serviceMayDieWhileItConnects()
    {
        MockService service(fixture_->system, "org.bluez.obex", QUARN_OBEX_TEMPLATE);
        service.awaitStart();
        ShareFixture::useBuses(fixture_->system.address(), fixture_->system.address());
        service.pause();
        fixture_->sendTo();
        service.end();
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 could not be sent."));
    }

    void busMayDieHalfWay()
    {
        OtherService other(*fixture_);
        other.startTransfer();
        other.bus.end();
        QTRY_VERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 could not be sent."));
    }

    void busMayHang_data()
    {
        QTest::addColumn<bool>("halfWay");
        QTest::newRow("while it connects") << false;
        QTest::newRow("half way") << true;
    }

    void busMayHang()
    {
        QFETCH(bool, halfWay);
        OtherService other(*fixture_);
        if (halfWay) {
            other.startTransfer();
            other.bus.pause();
        } else {
            fixture_->addDevice("11:22:33:44:55:66", "Laptop");
            QVERIFY(fixture_->share());
            other.bus.pause();
            pressKey(PhoneKey::Return);
            QCOMPARE(shareBox()->text(), QString("Connecting to Laptop..."));
        }
        pressKey(PhoneKey::SoftRight);
        QVERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("Sending was cancelled."));
        pressKey(PhoneKey::SoftRight);
        QVERIFY(nothingIsUp());
        // The next one is not held up by it.
        ShareFixture::useBuses(fixture_->system.address(), fixture_->session.address());
        QVERIFY(fixture_->share());
    }

    void floodDoesNotHideWhatMatters_data()
    {
        QTest::addColumn<bool>("cancels");
        QTest::newRow("the end") << false;
        QTest::newRow("a key") << true;
    }

    void floodDoesNotHideWhatMatters()
    {
        QFETCH(bool, cancels);
        fixture_->startTransfer();
        obex().mock(TransferPath, "AddMethod",
                    {Transfer, "Flood", "", "",
                     "import dbus.lowlevel\n"
                     "for i in range(2000):\n"
                     " signal = dbus.lowlevel.SignalMessage(self.path, "
                     "'org.freedesktop.DBus.Properties', 'PropertiesChanged')\n"
                     " signal.append('org.bluez.obex.Transfer1', "
                     "{'Transferred': dbus.UInt64(i % 999 + 1)}, [], signature='sa{sv}as')\n"
                     " self.connection.send_message(signal)"});
        obex().call(TransferPath, Transfer, "Flood");
        if (cancels) {
            pressKey(PhoneKey::SoftRight);
            QVERIFY(shareBox()->isResult());
            QTRY_VERIFY(!obex().exists(SessionPath));
            return;
        }
        fixture_->updateTransfer("complete", 1000);
        QTRY_VERIFY_WITH_TIMEOUT(shareBox()->isResult(), 30000);
        QCOMPARE(shareBox()->text(), QString("song.mp3 was sent to Laptop."));
    }

private:
    MockService& obex() { return fixture_->obex; }
};

QUARN_TEST_MAIN(tst_ShareTransfer)

#include "tst_sharetransfer.moc"
