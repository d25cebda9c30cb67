#pragma once

#include "plugins/support/picture.h"

#include <QObject>
#include <QThread>

#include <memory>

/// Decodes pictures in a thread of its own, one at a time. A new request replaces the one before.
class PictureLoader : public QObject
{
    Q_OBJECT

public:
    /// How long a decoder that is told to stop may go on, milliseconds.
    static constexpr int Patience = 10000;

    explicit PictureLoader(QObject* parent);
    /// Gives up what it is doing and waits for that; ends the process if the decoder does not obey.
    ~PictureLoader() override;

    /// As readPicture(); loaded() follows unless another request does.
    void load(const QString& path, const PictureWish& wish);

signals:
    void loaded(const Picture& picture);

private:
    using Cancellation = std::shared_ptr<std::atomic<bool>>;
    void cancel();
    void finish(const Cancellation& request, const Picture& picture);

    QThread thread_;
    QObject worker_; ///< lives in the thread
    Cancellation current_;
};
