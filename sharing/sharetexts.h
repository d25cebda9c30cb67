#pragma once

#include <QString>

/// What the sharing screens say. "%1" stands for the name of the file and "%2" for that of the
/// device, where both are known.
struct ShareTexts {
    QString title = QStringLiteral("Send by Bluetooth");
    QString searching = QStringLiteral("Searching for devices...");
    QString devices = QStringLiteral("Devices");
    QString noDevices = QStringLiteral("No devices found");
    QString paired = QStringLiteral("Paired");
    QString send = QStringLiteral("Send");
    QString cancel = QStringLiteral("Cancel");
    QString connecting = QStringLiteral("Connecting to %2...");
    QString sending = QStringLiteral("Sending %1 to %2...");
    QString sent = QStringLiteral("%1 was sent to %2.");
    QString refused = QStringLiteral("%2 did not accept %1.");
    QString cancelled = QStringLiteral("Sending was cancelled.");
    QString failed = QStringLiteral("%1 could not be sent.");
    QString lost = QStringLiteral("Bluetooth is no longer available.");

    /// The texts in use.
    static ShareTexts& instance();
};
