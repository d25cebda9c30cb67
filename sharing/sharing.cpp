#include "sharing/sharing.h"

#include "platform/zlistrowpainter.h"
#include "platform/zscreen.h"
#include "sharing/sharebox.h"
#include "sharing/sharedevicelist.h"
#include "sharing/sharetexts.h"

#include <QApplication>

namespace
{

/// What came from outside, short enough for a box.
QString presentable(const QString& name)
{
    constexpr qsizetype Longest = 60;
    QString shown = ZListRowPainter::visibleText(name);
    if (shown.size() > Longest)
        shown = shown.left(Longest / 2) + QChar(0x2026) + shown.right(Longest / 2);
    return shown;
}

} // namespace

Sharing::Sharing(std::unique_ptr<BluezDevices> devices, std::unique_ptr<ObexPush> push,
                 const QString& name)
    : QObject(ZScreen::instance()),
      devices_(std::move(devices)),
      push_(std::move(push)),
      name_(presentable(name))
{
    // The screens look like what they come up over.
    const QWidget* below = ZScreen::instance()->active();
    const QFont font = below != nullptr ? below->font() : QApplication::font();
    box_ = new ShareBox;
    list_ = new ShareDeviceList(name_, font);
    connect(list_, &ShareDeviceList::chosen, this, &Sharing::send);
    connect(list_, &ShareDeviceList::cancelled, this, &Sharing::close);
    connect(box_, &ShareBox::cancelled, push_.get(), &ObexPush::cancel);
    connect(box_, &ShareBox::closed, this, &Sharing::close);
    connect(devices_.get(), &BluezDevices::changed, this, &Sharing::updateDevices);
    connect(devices_.get(), &BluezDevices::lost, this,
            [this] { showResult(ShareTexts::instance().lost); });
    connect(push_.get(), &ObexPush::progressed, this, &Sharing::showProgress);
    connect(push_.get(), &ObexPush::finished, this, &Sharing::showOutcome);
    devices_->startSearch();
    updateDevices();
    list_->show();
}

Sharing::~Sharing()
{
    delete list_.data();
    delete box_.data();
}

void Sharing::updateDevices()
{
    list_->setDevices(devices_->devices(), devices_->isSearching());
}

void Sharing::send(const BluetoothDevice& device)
{
    const QString adapter = devices_->adapterAddress();
    // A search that goes on would slow down the connection.
    devices_.reset();
    deviceName_ = presentable(device.name.isEmpty() ? device.address : device.name);
    box_->showProgress(filled(ShareTexts::instance().connecting), 0, 0);
    list_->hide();
    push_->send(adapter, device.address);
}

void Sharing::showProgress(qint64 sent, qint64 size)
{
    box_->showProgress(filled(ShareTexts::instance().sending), sent, size);
}

void Sharing::showOutcome(ObexPush::Outcome outcome, const QString& reason)
{
    const ShareTexts& texts = ShareTexts::instance();
    switch (outcome) {
    case ObexPush::Outcome::Sent:
        return showResult(filled(texts.sent));
    case ObexPush::Outcome::Refused:
        return showResult(filled(texts.refused));
    case ObexPush::Outcome::Cancelled:
        return showResult(texts.cancelled);
    case ObexPush::Outcome::Failed:
        break;
    }
    const QString failed = filled(texts.failed);
    showResult(reason.isEmpty() ? failed : failed + QLatin1Char('\n') + presentable(reason));
}

void Sharing::showResult(const QString& text)
{
    box_->showResult(text);
    list_->hide();
    // The search may be over by a word of its own.
    if (devices_ != nullptr) {
        devices_->setParent(this);
        devices_.release()->deleteLater();
    }
}

void Sharing::close()
{
    devices_.reset();
    push_.reset();
    list_->hide();
    box_->hide();
    deleteLater();
}

QString Sharing::filled(const QString& text) const
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QStringView mark = QStringView(text).mid(i, 2);
        if (mark != QLatin1String("%1") && mark != QLatin1String("%2")) {
            result += text.at(i);
            continue;
        }
        result += mark == QLatin1String("%1") ? name_ : deviceName_;
        ++i;
    }
    return result;
}
