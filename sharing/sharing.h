#pragma once

#include "sharing/bluezdevices.h"
#include "sharing/obexpush.h"

#include <QFont>
#include <QObject>
#include <QPointer>

#include <memory>

class ShareBox;
class ShareDeviceList;

/// One file on its way to a device: from the list of devices to the result that the user closes,
/// when it deletes itself. Lives with the screen; goes early when that goes.
class Sharing : public QObject
{
    Q_OBJECT

public:
    /// `name` is what the file is called on the screens.
    Sharing(std::unique_ptr<BluezDevices> devices, std::unique_ptr<ObexPush> push,
            const QString& name);
    ~Sharing() override;

    /// Whether the user has closed it. It goes when the event loop is back.
    bool isOver() const { return push_ == nullptr; }

private:
    void updateDevices();
    void send(const BluetoothDevice& device);
    void showProgress(qint64 sent, qint64 size);
    void showOutcome(ObexPush::Outcome outcome, const QString& reason);
    void showResult(const QString& text);
    void close();
    /// A text with the names of the file and the device put in.
    QString filled(const QString& text) const;

    std::unique_ptr<BluezDevices> devices_;
    std::unique_ptr<ObexPush> push_;
    QString name_;
    QString deviceName_;
    QPointer<ShareDeviceList> list_;
    QPointer<ShareBox> box_;
};
