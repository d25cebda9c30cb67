#pragma once

#include "platform/busconnection.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantMap>

#include <memory>

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
    /// Finds a powered adapter, or one that can be switched on (it stays on). Blocks until the
    /// deadline at most; nullptr if there is no bus, no service or no adapter.
    static std::unique_ptr<BluezDevices> open(const QDeadlineTimer& deadline);
    /// Ends the search.
    ~BluezDevices() override;

    void startSearch();
    bool isSearching() const { return searching_; }
    /// Paired ones of before first, then others of before, then what came in the order it did.
    QList<BluetoothDevice> devices() const;
    QString adapterAddress() const { return adapterAddress_; }

signals:
    /// The devices, or whether a search is on. Changes in quick succession are told together.
    void changed();
    /// The adapter, the service or the bus has gone. There are no changes any more.
    void lost();

private slots:
    void interfacesAdded(const QDBusMessage& message);
    void interfacesRemoved(const QDBusMessage& message);
    void propertiesChanged(const QDBusMessage& message);
    void becomeLost();

private:
    struct Known {
        QString path;
        QVariantMap properties;
    };

    explicit BluezDevices(const QDeadlineTimer& deadline);
    bool start(const QDeadlineTimer& deadline);
    void listen();
    bool power(const QString& adapter, const QDeadlineTimer& deadline) const;
    void addDevice(const QString& path, const QVariantMap& properties);
    void adapterChanged(const QVariantMap& properties);
    void searchEnded();
    void tellSoon();

    BusConnection connection_;
    QString adapter_; ///< its object's path
    QString adapterAddress_;
    QList<Known> known_;
    QTimer changedSoon_;
    bool searching_ = false;
};
