#include "sharing/sharedevicelist.h"

#include "platform/zlistbox.h"
#include "platform/zsoftkey.h"
#include "sharing/sharetexts.h"

#include <QLabel>

#include <algorithm>

namespace
{

constexpr int DetailFontSize = 14;

QString elided(const QLabel& line, const QString& text, int room)
{
    return line.fontMetrics().elidedText(ZListRowPainter::visibleText(text), Qt::ElideMiddle, room);
}

} // namespace

ShareDeviceList::ShareDeviceList(const QString& file, const QFont& font)
    : ListPage(ShareTexts::instance().title, "ShareDeviceList", font, DetailFontSize)
{
    QLabel* name = addLine(Line::Above, Tone::Plain);
    name->setText(elided(*name, file, LineRoom));
    status_ = addLine(Line::Above, Tone::Quiet);
    softKeys().setText(ZSoftKey::Right, ShareTexts::instance().cancel);
    connect(list(), &ZListBox::selected, this, &ShareDeviceList::choose);
    setDevices({}, true);
}

/// A word for the end of a row's second line, as long as what stands before it leaves room.
QString ShareDeviceList::wordBehind(const QString& before, const QString& word) const
{
    const QFontMetrics metrics(detailFont());
    return metrics.elidedText(word, Qt::ElideRight,
                              detailRoom() - EndGap - metrics.horizontalAdvance(before));
}

ZListBoxItem* ShareDeviceList::makeRow(const BluetoothDevice& device) const
{
    auto* row = new ZListBoxItem(list(), QStringLiteral("%M"));
    row->appendSubItem(1, device.name.isEmpty() ? device.address : device.name, false);
    QString detail = device.name.isEmpty() ? QString() : device.address;
    if (device.paired)
        detail += QLatin1Char('\t') + wordBehind(detail, ShareTexts::instance().paired);
    row->appendSubItem(1, detail, false);
    return row;
}

void ShareDeviceList::setDevices(const QList<BluetoothDevice>& devices, bool searching)
{
    const ShareTexts& texts = ShareTexts::instance();
    status_->setText(elided(*status_,
                            searching           ? texts.searching
                            : devices.isEmpty() ? texts.noDevices
                                                : texts.devices,
                            LineRoom));
    // Without a device to send to the key does nothing.
    softKeys().setText(ZSoftKey::Left, devices.isEmpty() ? QString() : texts.send);
    if (devices == devices_)
        return;
    const int current = list()->currentItem();
    const QString path = current >= 0 ? devices_.value(current).path : QString();
    const int top = list()->topItem();
    devices_ = devices;
    list()->clear();
    for (const BluetoothDevice& device : devices)
        list()->insertItem(makeRow(device));
    const auto same = std::find_if(devices.begin(), devices.end(),
                                   [&path](const auto& device) { return device.path == path; });
    list()->setBottomItem(top + list()->visibleItems() - 1);
    // Of a device that has gone, the one that took its place; at first the first.
    list()->setCurrentItem(same != devices.end() ? int(same - devices.begin())
                                                 : std::max(current, 0));
}

QString ShareDeviceList::status() const
{
    return status_->text();
}

void ShareDeviceList::choose(int row)
{
    if (row >= 0 && row < devices_.size())
        emit chosen(BluetoothDevice(devices_.at(row)));
}

void ShareDeviceList::softKeyPressed(int key)
{
    if (key == ZSoftKey::Left)
        choose(list()->currentItem());
    else
        emit cancelled();
}
