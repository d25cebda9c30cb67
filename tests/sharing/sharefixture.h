#pragma once

#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zmodule.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"
#include "sharing/share_tool.h"
#include "tests/sharing/mockservices.h"
#include "tests/support/keys.h"
#include "tests/support/mainwidget.h"
#include "tests/support/scratchfolder.h"

#include <memory>

const QString AdapterPath = QStringLiteral("/org/bluez/hci0");
const QString Adapter = QStringLiteral("org.bluez.Adapter1");
const QString Device = QStringLiteral("org.bluez.Device1");
const QString BluezMock = QStringLiteral("org.bluez.Mock");
const QString ClientPath = QStringLiteral("/org/bluez/obex");
const QString Client = QStringLiteral("org.bluez.obex.Client1");
const QString SessionPath = QStringLiteral("/org/bluez/obex/client/session0");
const QString TransferPath = SessionPath + QStringLiteral("/transfer0");
const QString Transfer = QStringLiteral("org.bluez.obex.Transfer1");

/// A screen of the module, by what can be seen of it from outside; nullptr if it is not there.
class ShareScreen
{
public:
    explicit ShareScreen(QWidget* widget) : widget_(widget) {}
    operator QWidget*() const { return widget_; }
    const ShareScreen* operator->() const { return this; }

    // The list of devices.
    ZListBox* list() const { return widget_->findChild<ZListBox*>(); }
    ZSoftKey* keys() const { return widget_->findChild<ZSoftKey*>(); }
    QString status() const { return widget_->property("status").toString(); }

    // The box.
    QString text() const { return widget_->property("text").toString(); }
    int percent() const { return widget_->property("percent").toInt(); }
    bool isResult() const { return widget_->property("result").toBool(); }
    int height() const { return widget_->height(); }
    QRect geometry() const { return widget_->geometry(); }
    bool isVisible() const { return widget_->isVisible(); }
    QImage picture() const { return widget_->grab().toImage(); }

private:
    QWidget* widget_;
};

/// One that is there, shown or not.
inline ShareScreen screenCalled(const char* name)
{
    return ShareScreen(ZScreen::instance()->findChild<QWidget*>(QLatin1String(name)));
}

/// The screens that are up; nullptr if there are none.
inline ShareScreen shown(const char* name)
{
    for (auto* screen : ZScreen::instance()->findChildren<QWidget*>(QLatin1String(name))) {
        if (screen->isVisible())
            return ShareScreen(screen);
    }
    return ShareScreen(nullptr);
}

inline ShareScreen deviceList()
{
    return shown("ShareDeviceList");
}

inline ShareScreen shareBox()
{
    return shown("ShareBox");
}

inline bool nothingIsUp()
{
    return deviceList() == nullptr && shareBox() == nullptr;
}

/// The texts of the rows: name, detail.
inline QStringList rows()
{
    QStringList result;
    for (int row = 0; deviceList() != nullptr && row < deviceList()->list()->count(); ++row) {
        const ZListBoxItem* item = deviceList()->list()->item(row);
        result.append(item->getSubItemText(1, 0) + QLatin1Char('|') + item->getSubItemText(1, 1));
    }
    return result;
}

/// A tap with a finger; `point` in the widget's coordinates.
inline void tap(QWidget* widget, const QPoint& point)
{
    QTest::mouseClick(widget, Qt::LeftButton, {}, point);
}

/// Two buses with a Bluetooth service and an object exchange service, one file to send and a main
/// widget on the screen. init() before and cleanup() after each test.
class ShareFixture
{
public:
    ShareFixture()
        : bluez(system, QStringLiteral("org.bluez"), QStringLiteral("bluez5")),
          obex(session, QStringLiteral("org.bluez.obex"), QStringLiteral(QUARN_OBEX_TEMPLATE))
    {
        ZModule::setFolder(QByteArrayLiteral(QUARN_MODULES));
        bluez.awaitStart();
        obex.awaitStart();
    }

    /// Puts an adapter there, which has nothing around it.
    void init()
    {
        useBuses(system.address(), session.address());
        bluez.resume();
        obex.resume();
        bluez.reset();
        obex.reset();
        addAdapter();
        files.write(QStringLiteral("song.mp3"), QByteArray(1000, 'x'));
        main = showMainWidget();
    }

    /// Closes what a test left up. Whatever happened in it, nothing is connected any more then.
    void cleanup()
    {
        if (deviceList() != nullptr)
            pressKey(PhoneKey::SoftRight);
        if (shareBox() != nullptr && !shareBox()->isResult())
            pressKey(PhoneKey::SoftRight);
        if (shareBox() != nullptr)
            pressKey(PhoneKey::SoftRight);
        main.reset();
        QTRY_COMPARE(system.guests(), 1);
        QTRY_COMPARE(session.guests(), 1);
        QVERIFY(nothingIsUp());
    }

    static void useBuses(const QByteArray& systemBus, const QByteArray& sessionBus)
    {
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", systemBus);
        qputenv("DBUS_SESSION_BUS_ADDRESS", sessionBus);
    }

    bool share(const QString& name = QStringLiteral("song.mp3")) const
    {
        return SHARE_Tool::shareByBt({QLatin1Char('/') + name, QStringLiteral("media/MP3")},
                                     files.path(name), false);
    }

    void addAdapter()
    {
        bluez.call(QStringLiteral("/"), BluezMock, QStringLiteral("AddAdapter"),
                   {QStringLiteral("hci0"), QStringLiteral("phone")});
        bluez.mock(AdapterPath, QStringLiteral("AddProperty"),
                   {Adapter, QStringLiteral("DiscoveryFilter"), QVariantMap()});
    }

    /// Returns the object's path.
    QString addDevice(const QString& address, const QString& name)
    {
        return bluez
            .call(QStringLiteral("/"), BluezMock, QStringLiteral("AddDevice"),
                  {QStringLiteral("hci0"), address, name})
            .toString();
    }

    void pair(const QString& device)
    {
        bluez.update(device, Device, {{QStringLiteral("Paired"), true}});
    }

    bool isSearching()
    {
        return bluez.property(AdapterPath, Adapter, QStringLiteral("Discovering")).toBool();
    }

    /// Shares and chooses the only device there is.
    void sendTo(const QString& name = QStringLiteral("Laptop"),
                const QString& file = QStringLiteral("song.mp3"))
    {
        addDevice(QStringLiteral("11:22:33:44:55:66"), name);
        QVERIFY(share(file));
        QCOMPARE(rows().size(), 1);
        pressKey(PhoneKey::Return);
        QVERIFY(shareBox());
    }

    /// The same, up to a transfer that the service has queued.
    void startTransfer()
    {
        sendTo();
        QTRY_VERIFY(obex.exists(TransferPath));
        QTRY_COMPARE(shareBox()->percent(), 0);
    }

    void updateTransfer(const QString& status, qulonglong sent)
    {
        obex.update(TransferPath, Transfer,
                    {{QStringLiteral("Status"), status}, {QStringLiteral("Transferred"), sent}});
    }

    PrivateBus system;
    PrivateBus session;
    MockService bluez;
    MockService obex;
    ScratchFolder files;
    std::unique_ptr<QWidget> main;
};
