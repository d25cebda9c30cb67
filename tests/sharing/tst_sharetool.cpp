#include "lang/texts.h"
#include "platform/keymap.h"
#include "tests/platform/selfrun.h"
#include "tests/sharing/sharetest.h"
#include "tests/support/testmain.h"

#include <QElapsedTimer>
#include <QLocalServer>

#include <algorithm>
#include <fcntl.h>

namespace
{

/// A moment to a user, on a machine that is slow and busy.
constexpr qint64 MomentMilliseconds = 10000;

/// The open descriptors by what they stand for.
QMap<QString, int> openDescriptors()
{
    QMap<QString, int> result;
    for (const QFileInfo& entry : QDir("/proc/self/fd").entryInfoList(QDir::Files | QDir::System))
        result.insert(entry.symLinkTarget(), entry.fileName().toInt());
    return result;
}

} // namespace

// When a file can be shared, and the list of devices that comes up then.
class tst_ShareTool : public ShareTest
{
    Q_OBJECT

private slots:
    void screensSpeakTheLanguageOfTheProgram()
    {
        fixture_->files.write("a.lang", "[Language]\nBLUETOOTH = Per Funk\nSEARCHING = Suche\n"
                                        "CANCEL = Ende\n");
        loadTexts(fixture_->files.path("a.lang"));
        const bool shared = fixture_->share();
        loadTexts(QString());
        QVERIFY(shared);
        QCOMPARE(deviceList()->status(), QString("Suche"));
        QCOMPARE(deviceList()->keys()->text(ZSoftKey::Right), QString("Ende"));
        QCOMPARE(static_cast<QWidget*>(deviceList())->windowTitle(), QString("Per Funk"));
    }

    void screensAreInEnglishWithoutALanguage()
    {
        QVERIFY(fixture_->share());
        QCOMPARE(deviceList()->status(), QString("Searching for devices..."));
        QCOMPARE(deviceList()->keys()->text(ZSoftKey::Right), QString("Cancel"));
    }

    void requestIsDeclinedWithoutABus_data()
    {
        QTest::addColumn<QByteArray>("systemBus");
        QTest::addColumn<QByteArray>("sessionBus");
        const QByteArray good = fixture_->system.address();
        for (const char* address :
             {"unix:path=/nowhere", "unix:abstract=nowhere", "unix:path=/dev/null", "unix:", "x",
              "unix:path=/nowhere;;", "tcp:host=127.0.0.1,port=1", "unixexec:path=/bin/false"}) {
            QTest::addRow("system bus %s", address) << QByteArray(address) << good;
            QTest::addRow("session bus %s", address) << good << QByteArray(address);
        }
        QTest::newRow("session bus not named") << good << QByteArray();
    }

    void requestIsDeclinedWithoutABus()
    {
        QFETCH(QByteArray, systemBus);
        QFETCH(QByteArray, sessionBus);
        ShareFixture::useBuses(systemBus, sessionBus);
        expectDeclined();
        ShareFixture::useBuses(fixture_->system.address(), fixture_->session.address());
        QVERIFY(fixture_->share());
    }

    void requestIsDeclinedWhenABusIsSilent()
    {
        QLocalServer silent;
        QVERIFY(silent.listen(fixture_->files.path("silent")));
        const QByteArray address = "unix:path=" + fixture_->files.path("silent").toUtf8();
        ShareFixture::useBuses(address, fixture_->session.address());
        expectDeclined();
        ShareFixture::useBuses(fixture_->system.address(), address);
        expectDeclined();
    }

    void requestIsDeclinedWhenABusIsFull()
    {
        const PrivateBus full("<limit name=\"max_connections_per_user\">1</limit>");
        ShareFixture::useBuses(full.address(), fixture_->session.address());
        expectDeclined();
        ShareFixture::useBuses(fixture_->system.address(), full.address());
        expectDeclined();
    }

    void requestIsDeclinedWithoutAService()
    {
        const PrivateBus empty;
        ShareFixture::useBuses(empty.address(), fixture_->session.address());
        expectDeclined();
        ShareFixture::useBuses(fixture_->system.address(), empty.address());
        expectDeclined();
        QCOMPARE(fixture_->bluez.calls(AdapterPath, "StartDiscovery"), 0);
    }

    void requestIsDeclinedWhenTheServiceIsSilent()
    {
        fixture_->bluez.pause();
        expectDeclined();
        fixture_->bluez.resume();
        QVERIFY(fixture_->share());
    }

    void requestIsDeclinedWithoutAnAdapter()
    {
        fixture_->bluez.reset();
        expectDeclined();
        fixture_->addAdapter();
        QVERIFY(fixture_->share());
    }

    void adapterThatIsOffIsSwitchedOn()
    {
        fixture_->bluez.update(AdapterPath, Adapter, {{"Powered", false}});
        QVERIFY(fixture_->share());
        QVERIFY(fixture_->bluez.property(AdapterPath, Adapter, "Powered").toBool());
    }

    void adapterThatStaysOffDeclinesTheRequest()
    {
        PrivateBus bus("<policy context=\"mandatory\"><deny send_member=\"Set\" "
                       "send_interface=\"org.freedesktop.DBus.Properties\"/></policy>");
        MockService service(bus, "org.bluez", "bluez5");
        service.awaitStart();
        service.call("/", BluezMock, "AddAdapter", {"hci0", "phone"});
        service.update(AdapterPath, Adapter, {{"Powered", false}});
        ShareFixture::useBuses(bus.address(), fixture_->session.address());
        expectDeclined();
    }

    void poweredAdapterIsTakenOverOneThatIsOff()
    {
        fixture_->bluez.update(AdapterPath, Adapter, {{"Powered", false}});
        fixture_->bluez.call("/", BluezMock, "AddAdapter", {"hci1", "second"});
        fixture_->bluez.mock("/org/bluez/hci1", "AddProperty",
                             {Adapter, "DiscoveryFilter", QVariantMap()});
        fixture_->addDevice("11:22:33:44:55:66", "of the first");
        fixture_->bluez.call("/", BluezMock, "AddDevice", {"hci1", "11:22:33:44:55:67", "ours"});
        QVERIFY(fixture_->share());
        QCOMPARE(rows(), QStringList{"ours|11:22:33:44:55:67"});
        QVERIFY(!fixture_->bluez.property(AdapterPath, Adapter, "Powered").toBool());
    }

    void serviceThatTheBusCanStartIsStarted()
    {
        fixture_->files.write("services/obex.service",
                              "[D-BUS Service]\nName=org.bluez.obex\nExec=" QUARN_PYTHON
                              " -B -m dbusmock --session --template " QUARN_OBEX_TEMPLATE "\n");
        const PrivateBus bus("<servicedir>" + fixture_->files.path("services").toUtf8() +
                             "</servicedir>");
        ShareFixture::useBuses(fixture_->system.address(), bus.address());
        fixture_->addDevice("11:22:33:44:55:66", "Laptop");
        QVERIFY(fixture_->share());
        QVERIFY(!bus.has("org.bluez.obex"));
        pressKey(PhoneKey::Return);
        QTRY_COMPARE_WITH_TIMEOUT(shareBox()->percent(), 0, 30000);
        QVERIFY(bus.has("org.bluez.obex"));
    }

    void sessionBusIsFoundInTheRuntimeFolder()
    {
        const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
        fixture_->files.makeFolder("run %time");
        const QString socket = QString::fromUtf8(fixture_->session.address()).section('=', 1);
        fixture_->files.makeLink("run %time/bus", socket);
        qputenv("XDG_RUNTIME_DIR", fixture_->files.path("run %time").toUtf8());
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        const bool accepted = fixture_->share();
        qputenv("XDG_RUNTIME_DIR", before);
        QVERIFY(accepted);
    }

    void secondOfSeveralAddressesWillDo()
    {
        ShareFixture::useBuses("unix:path=/nowhere;" + fixture_->system.address(),
                               fixture_->session.address());
        QVERIFY(fixture_->share());
    }

    void secondRequestIsDeclinedWhileOneRuns()
    {
        QVERIFY(fixture_->share());
        const QWidget* first = deviceList();
        QVERIFY(!fixture_->share());
        QVERIFY(deviceList() == first);
        pressKey(PhoneKey::SoftRight);
        QVERIFY(fixture_->share());
    }

    void knownDevicesAreThereAtOnce()
    {
        fixture_->addDevice("11:22:33:44:55:01", "Laptop");
        fixture_->pair(fixture_->addDevice("11:22:33:44:55:02", "Phone"));
        QVERIFY(fixture_->share());
        QCOMPARE(rows(),
                 (QStringList{"Phone|11:22:33:44:55:02\tPaired", "Laptop|11:22:33:44:55:01"}));
        QCOMPARE(deviceList()->list()->currentItem(), 0);
        QCOMPARE(deviceList()->status(), QString("Searching for devices..."));
        QVERIFY(ZScreen::instance()->active() == deviceList());
    }

    void devicesThatCannotTakeFilesAreLeftOut()
    {
        const auto bluez = [this](const QString& address, const QVariantMap& properties) {
            fixture_->bluez.update(fixture_->addDevice(address, "x"), Device, properties);
        };
        bluez("11:22:33:44:55:01", {{"AddressType", "random"}});
        bluez("11:22:33:44:55:02", {{"Blocked", true}});
        const QStringList headset{"0000110b-0000-1000-8000-00805f9b34fb"};
        bluez("11:22:33:44:55:03", {{"Paired", true}, {"UUIDs", headset}});
        bluez("11:22:33:44:55:04", {{"UUIDs", headset}});
        QVERIFY(fixture_->share());
        // Of a device that is not paired, what it can do is not all known.
        QCOMPARE(rows(), QStringList{"x|11:22:33:44:55:04"});
    }

    void devicesAreAddedAsTheyAreFound()
    {
        fixture_->addDevice("11:22:33:44:55:02", "First");
        QVERIFY(fixture_->share());
        QTRY_VERIFY(fixture_->isSearching());
        // Its object's path comes before the other's.
        fixture_->addDevice("11:22:33:44:55:01", "Second");
        QTRY_COMPARE(rows(), (QStringList{"First|11:22:33:44:55:02", "Second|11:22:33:44:55:01"}));
        pressKey(PhoneKey::Down);
        QCOMPARE(deviceList()->list()->currentItem(), 1);
        fixture_->addDevice("11:22:33:44:55:00", "Third");
        QTRY_COMPARE(rows().size(), 3);
        QCOMPARE(deviceList()->list()->currentItem(), 1);
    }

    void nameThatComesLaterReplacesTheAddress()
    {
        const QString path = fixture_->addDevice("11:22:33:44:55:66", "");
        fixture_->bluez.update(path, Device, {{"Alias", "11-22-33-44-55-66"}});
        QVERIFY(fixture_->share());
        QCOMPARE(rows(), QStringList{"11:22:33:44:55:66|"});
        fixture_->bluez.update(path, Device, {{"Name", "Laptop"}, {"Alias", "Laptop"}});
        QTRY_COMPARE(rows(), QStringList{"Laptop|11:22:33:44:55:66"});
    }

    void deviceThatVanishesLeavesTheList()
    {
        fixture_->addDevice("11:22:33:44:55:01", "One");
        const QString two = fixture_->addDevice("11:22:33:44:55:02", "Two");
        fixture_->addDevice("11:22:33:44:55:03", "Three");
        fixture_->addDevice("11:22:33:44:55:04", "Four");
        QVERIFY(fixture_->share());
        pressKey(PhoneKey::Down);
        pressKey(PhoneKey::Down);
        fixture_->bluez.call(AdapterPath, Adapter, "RemoveDevice",
                             {QVariant::fromValue(BusPath{two})});
        QTRY_COMPARE(rows().size(), 3);
        QCOMPARE(deviceList()->list()->currentItem(), 1);
        QVERIFY(rows().at(1).startsWith("Three"));
    }

    void longListKeepsItsPlaceWhileItGrows()
    {
        for (int i = 10; i < 40; ++i)
            fixture_->addDevice(QString("11:22:33:44:55:%1").arg(i), QString::number(i));
        QVERIFY(fixture_->share());
        for (int i = 0; i < 20; ++i)
            pressKey(PhoneKey::Down);
        pressKey(PhoneKey::Up);
        const int top = deviceList()->list()->topItem();
        QVERIFY(top > 0);
        fixture_->addDevice("11:22:33:44:55:50", "new");
        QTRY_COMPARE(rows().size(), 31);
        QCOMPARE(deviceList()->list()->currentItem(), 19);
        QCOMPARE(deviceList()->list()->topItem(), top);
    }

    void searchThatEndsIsSaid_data()
    {
        QTest::addColumn<bool>("begins");
        QTest::addColumn<bool>("devices");
        QTest::addColumn<QString>("status");
        QTest::newRow("with devices") << true << true << "Devices";
        QTest::newRow("without") << true << false << "No devices found";
        QTest::newRow("never begun, with devices") << false << true << "Devices";
        QTest::newRow("never begun, without") << false << false << "No devices found";
    }

    void searchThatEndsIsSaid()
    {
        QFETCH(bool, begins);
        QFETCH(bool, devices);
        QFETCH(QString, status);
        if (devices)
            fixture_->addDevice("11:22:33:44:55:66", "Laptop");
        if (!begins)
            fixture_->bluez.mock(AdapterPath, "AddMethod",
                                 {Adapter, "StartDiscovery", "", "",
                                  "raise dbus.exceptions.DBusException('no', "
                                  "name='org.bluez.Error.Failed')"});
        QVERIFY(fixture_->share());
        QCOMPARE(deviceList()->status(), QString("Searching for devices..."));
        if (begins) {
            QTRY_VERIFY(fixture_->isSearching());
            fixture_->bluez.update(AdapterPath, Adapter, {{"Discovering", false}});
        }
        QTRY_COMPARE(deviceList()->status(), status);
    }

    void emptyListChoosesNothing()
    {
        QVERIFY(fixture_->share());
        QCOMPARE(deviceList()->keys()->shownText(ZSoftKey::Left), QString());
        QCOMPARE(deviceList()->keys()->shownText(ZSoftKey::Right), QString("Cancel"));
        for (const int key : {PhoneKey::Return, PhoneKey::SoftLeft, PhoneKey::Down})
            pressKey(key);
        QVERIFY(deviceList() != nullptr);
        QVERIFY(shareBox() == nullptr);
        // With the first device there is something to send to.
        fixture_->addDevice("11:22:33:44:55:01", "One");
        QTRY_COMPARE(deviceList()->keys()->shownText(ZSoftKey::Left), QString("Send"));
    }

    void backEndsTheSearch_data()
    {
        QTest::addColumn<bool>("byTap");
        QTest::newRow("right soft key") << false;
        QTest::newRow("tap") << true;
    }

    void backEndsTheSearch()
    {
        QFETCH(bool, byTap);
        QVERIFY(fixture_->share());
        QTRY_VERIFY(fixture_->isSearching());
        if (byTap)
            tap(deviceList()->keys(), {220, 10});
        else
            pressKey(PhoneKey::SoftRight);
        QVERIFY(nothingIsUp());
        QCOMPARE(ZScreen::instance()->active(), fixture_->main.get());
        QTRY_COMPARE(fixture_->system.guests(), 1);
        QTRY_COMPARE(fixture_->session.guests(), 1);
        QVERIFY(!fixture_->isSearching());
    }

    void deviceIsChosen_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Return") << int(PhoneKey::Return);
        QTest::newRow("left soft key") << int(PhoneKey::SoftLeft);
        QTest::newRow("tap on Send") << 0;
    }

    void deviceIsChosen()
    {
        QFETCH(int, key);
        fixture_->addDevice("11:22:33:44:55:01", "One");
        fixture_->addDevice("11:22:33:44:55:02", "Two");
        QVERIFY(fixture_->share());
        pressKey(PhoneKey::Down);
        if (key == 0)
            tap(deviceList()->keys(), {20, 10});
        else
            pressKey(key);
        QVERIFY(deviceList() == nullptr);
        QVERIFY(shareBox() != nullptr);
        QTRY_COMPARE(shareBox()->text(), QString("Sending song.mp3 to Two..."));
    }

    void adapterMayVanish_data()
    {
        QTest::addColumn<QString>("how");
        for (const char* how : {"removed", "switched off", "service dies", "bus dies"})
            QTest::newRow(how) << how;
    }

    void adapterMayVanish()
    {
        QFETCH(QString, how);
        PrivateBus bus;
        MockService service(bus, "org.bluez", "bluez5");
        service.awaitStart();
        service.call("/", BluezMock, "AddAdapter", {"hci0", "phone"});
        ShareFixture::useBuses(bus.address(), fixture_->session.address());
        QVERIFY(fixture_->share());
        if (how == "removed")
            service.call("/", BluezMock, "RemoveAdapter", {"hci0"});
        else if (how == "switched off")
            service.update(AdapterPath, Adapter, {{"Powered", false}});
        else if (how == "service dies")
            service.end();
        else
            bus.end();
        QTRY_VERIFY(shareBox() != nullptr);
        QVERIFY(shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("Bluetooth is no longer available."));
        QVERIFY(deviceList() == nullptr);
    }

    void exchangeServiceMayDieWhileADeviceIsChosen()
    {
        MockService service(fixture_->system, "org.bluez.obex", QUARN_OBEX_TEMPLATE);
        service.awaitStart();
        ShareFixture::useBuses(fixture_->system.address(), fixture_->system.address());
        QVERIFY(fixture_->share());
        QTRY_VERIFY(fixture_->isSearching());
        service.end();
        QTRY_VERIFY(shareBox() != nullptr && shareBox()->isResult());
        QCOMPARE(shareBox()->text(), QString("song.mp3 could not be sent."));
        QTRY_VERIFY(!fixture_->isSearching());
        QTRY_COMPARE(fixture_->system.guests(), 1);
    }

    void hiddenWindowDoesNotStopTheSearch()
    {
        QVERIFY(fixture_->share());
        fixture_->main->hide();
        QVERIFY(deviceList() != nullptr);
        ZScreen::instance()->window()->hide();
        fixture_->addDevice("11:22:33:44:55:66", "Laptop");
        const ShareScreen list = screenCalled("ShareDeviceList");
        QTRY_COMPARE(list->list()->count(), 1);
        ZScreen::instance()->window()->show();
        fixture_->main->show();
        QVERIFY(ZScreen::instance()->active() == list);
        QCOMPARE(rows(), QStringList{"Laptop|11:22:33:44:55:66"});
        pressKey(PhoneKey::SoftRight);
        QVERIFY(nothingIsUp());
        QCOMPARE(ZScreen::instance()->active(), fixture_->main.get());
    }

    void startedProgramsInheritNothing()
    {
        const QMap<QString, int> before = openDescriptors();
        fixture_->sendTo();
        int added = 0;
        const QMap<QString, int> now = openDescriptors();
        for (auto open = now.begin(); open != now.end(); ++open) {
            const int flags = fcntl(open.value(), F_GETFD);
            if (flags < 0 || before.contains(open.key()))
                continue;
            ++added;
            QVERIFY2((flags & FD_CLOEXEC) != 0, qPrintable(open.key()));
        }
        QVERIFY(added > 0);
    }

    void quittingEndsEverything_data()
    {
        QTest::addColumn<QString>("when");
        QTest::newRow("while searching") << "--search";
        QTest::newRow("while sending") << "--send";
    }

    void quittingEndsEverything()
    {
        QFETCH(QString, when);
        fixture_->addDevice("11:22:33:44:55:66", "Laptop");
        const SelfRun run = SelfRun::with({when, fixture_->files.path("song.mp3")}, {});
        QVERIFY2(run.status == 0, run.errors.constData());
        QTRY_COMPARE(fixture_->system.guests(), 1);
        QTRY_COMPARE(fixture_->session.guests(), 1);
        QCOMPARE(fixture_->bluez.calls(AdapterPath, "StartDiscovery"), 1);
        QVERIFY(!fixture_->isSearching());
        QVERIFY(!fixture_->obex.exists(SessionPath));
        QCOMPARE(fixture_->obex.calls(ClientPath, "RemoveSession"), when == "--send" ? 1 : 0);
    }

private:
    void expectDeclined()
    {
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!fixture_->share());
        QVERIFY2(timer.elapsed() < MomentMilliseconds,
                 qPrintable(QString::number(timer.elapsed())));
        QVERIFY(nothingIsUp());
        QCOMPARE(ZScreen::instance()->active(), fixture_->main.get());
    }
};

/// A program that shares a file and quits half way; the exit status says whether it got there.
int shareAndQuit(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    ZModule::setFolder(QByteArrayLiteral(QUARN_MODULES));
    if (!SHARE_Tool::shareByBt({"/song.mp3", "media/MP3"}, argv[2], false))
        return 1;
    bool reached = false;
    const bool sends = qstrcmp(argv[1], "--send") == 0;
    if (sends)
        pressKey(PhoneKey::Return);
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&reached, sends] {
        reached =
            sends ? shareBox() != nullptr && shareBox()->percent() == 0 : deviceList() != nullptr;
        if (reached)
            ZApplication::quit();
    });
    poll.start(1);
    QTimer::singleShot(30000, &ZApplication::quit);
    QApplication::exec();
    return reached ? 0 : 2;
}

int main(int argc, char** argv)
{
    if (argc == 3 && qstrncmp(argv[1], "--se", 4) == 0)
        return shareAndQuit(argc, argv);
    return runTest<tst_ShareTool>(argc, argv);
}

#include "tst_sharetool.moc"
