#pragma once

#include "sharing/busconnection.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantMap>

#include <functional>

/// A device that a file could be sent to.
struct BluetoothDevice {
    QString path;    ///< the Bluetooth service's object, different for each
    QString address; ///< "00:11:22:33:44:55"
    QString name;    ///< empty if it has none; may contain anything
    bool paired = false;

    bool operator==(const BluetoothDevice& other) const = default;
};

/// The devices around one Bluetooth adapter of this machine: those known from before and those that
/// a search finds.
class BluezDevices : public QObject
{
    Q_OBJECT

public:
    BluezDevices();
    /// Ends the search.
    ~BluezDevices() override;

    /// Finds a powered adapter, or one that can be switched on (it stays on). isOpen() some
    /// time later, or lost(); never within this call.
    void open();
    bool isOpen() const { return !adapter_.isEmpty(); }
    void startSearch();
    bool isSearching() const { return searching_; }
    /// Paired ones of before first, then others of before, then what came in the order it did.
    QList<BluetoothDevice> devices() const;
    QString adapterAddress() const { return adapterAddress_; }

signals:
    /// The devices, or whether a search is on. Changes in quick succession are told together.
    void changed();
    /// There is no adapter, service or bus, or it has gone. There are no changes any more.
    void lost();

private:
    struct Known {
        QString path;
        QVariantMap properties;
    };

    void listen();
    void objectsCame(const BusMessage& reply);
    void tryAdapters();
    void take(const QString& adapter);
    /// Has the signals handled, those that come before there is an adapter after it is there.
    void hear(const QString& interface, const char* signal,
              void (BluezDevices::*handler)(const BusMessage&));
    void interfacesAdded(const BusMessage& message);
    void interfacesRemoved(const BusMessage& message);
    void propertiesChanged(const BusMessage& message);
    void becomeLost();
    void addDevice(const QString& path, const QVariantMap& properties);
    void adapterChanged(const QVariantMap& properties);
    void searchEnded();
    void tellSoon();

    BusConnection::Pointer connection_;
    QVariantMap objects_;  ///< the service's, while an adapter is looked for
    QStringList adapters_; ///< those still to be tried
    QList<std::function<void()>> early_;
    QString adapter_; ///< its object's path; empty while there is none
    QString adapterAddress_;
    QList<Known> known_;
    QTimer changedSoon_;
    bool searching_ = false;
};
