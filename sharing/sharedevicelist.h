#pragma once

#include "sharing/bluezdevices.h"
#include "widgets/listpage.h"

class QLabel;
class ZListBoxItem;

/// The screen on which a device is chosen: a list that is given anew while a search goes on.
/// Return, the left soft key or a second tap chooses the highlighted device, the right soft key
/// goes back. Everything below it on the screen is inert while it is shown.
class ShareDeviceList : public ListPage
{
    Q_OBJECT
    Q_PROPERTY(QString status READ status)

public:
    /// `file` is the name of what is to be sent.
    ShareDeviceList(const QString& file, const QFont& font);

    /// Shows these devices and keeps the highlight on the device that it was on.
    void setDevices(const QList<BluetoothDevice>& devices, bool searching);

    /// The line above the list that tells of the search.
    QString status() const;

signals:
    void chosen(const BluetoothDevice& device);
    void cancelled();

protected:
    void softKeyPressed(int key) override;

private:
    QString wordBehind(const QString& before, const QString& word) const;
    ZListBoxItem* makeRow(const BluetoothDevice& device) const;
    void choose(int row);

    QList<BluetoothDevice> devices_;
    QLabel* status_;
};
