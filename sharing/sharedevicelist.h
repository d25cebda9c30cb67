#pragma once

#include "platform/zmainwidget.h"
#include "sharing/bluezdevices.h"

class QLabel;
class ZListBox;
class ZSoftKey;

/// The screen on which a device is chosen: a list that is given anew while a search goes on.
/// Return, the left soft key or a second tap chooses the highlighted device, the right soft key
/// goes back. Everything below it on the screen is inert while it is shown.
class ShareDeviceList : public ZMainWidget
{
    Q_OBJECT
    Q_PROPERTY(QString status READ status)

public:
    /// `file` is the name of what is to be sent.
    ShareDeviceList(const QString& file, const QFont& font);

    /// Shows these devices and keeps the highlight on the device that it was on.
    void setDevices(const QList<BluetoothDevice>& devices, bool searching);

    ZListBox* list() const { return list_; }
    /// The line above the list that tells of the search.
    QString status() const;

signals:
    void chosen(const BluetoothDevice& device);
    void cancelled();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void choose(int row);
    void softKey(int key);

    QList<BluetoothDevice> devices_;
    QLabel* status_;
    ZListBox* list_;
    ZSoftKey* keys_;
};
