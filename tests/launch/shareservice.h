#pragma once

#include "sharing/share_tool.h"

#include <QList>
#include <QString>

/// The sharing service in the place of the program's own, while this lives. Its module is one of
/// the test's, which tells this of each request; the executable must export itself to it. One at a
/// time.
class ShareService
{
public:
    struct Request {
        QString name;
        QString type;
        QString path;
    };

    ShareService();
    ~ShareService();
    ShareService(const ShareService&) = delete;
    ShareService& operator=(const ShareService&) = delete;

    QList<Request> requests;
    /// What it answers.
    bool accepts = true;

    // For the module.
    static bool share(const SHARE_Tool::OBJECT_INFO& info, const QString& path);
};
