#pragma once

#include <QString>

/// The sharing service: sends files to other devices with screens of its own.
class SHARE_Tool
{
public:
    /// What is to be shared.
    struct OBJECT_INFO {
        QString objectName; ///< shown to the user; a leading "/" is left out
        QString objectType; ///< informative: the receiving device goes by the file's name
    };

    /// Offers to send a file by Bluetooth, which the module "sharing" does. True when the request
    /// was accepted: a list of devices is up then, and all else, the result included, happens in
    /// the event loop. False, within three seconds, when there is no Bluetooth (no module, bus,
    /// service or powered adapter), when an earlier request is still going on or when the path is
    /// no Unicode text, which the bus cannot carry. The event loop runs meanwhile; main widgets get
    /// no input. An adapter that is off is switched on and stays on. `flag` was for the phone and
    /// is not used.
    ///
    /// The search is stopped and the connection to the device ended when the user closes the
    /// screens, and when the application object goes before that.
    static bool shareByBt(const OBJECT_INFO& info, const QString& path, bool flag);

    /// Whether shareByBt() fails since the program was upgraded while it runs.
    static bool needsRestart();
};
