#include "plugins/picview/pictureloader.h"

#include <cstdlib>
#include <utility>

PictureLoader::PictureLoader(QObject* parent) : QObject(parent)
{
    worker_.moveToThread(&thread_);
    thread_.start();
}

PictureLoader::~PictureLoader()
{
    cancel();
    thread_.quit();
    // Some decoders read all there is and then compute for as long as they like.
    if (!thread_.wait(Patience))
        std::_Exit(EXIT_FAILURE);
}

void PictureLoader::load(const QString& path, const PictureWish& wish)
{
    cancel();
    current_ = std::make_shared<std::atomic<bool>>(false);
    QMetaObject::invokeMethod(&worker_, [this, path, wish, request = current_] {
        if (*request)
            return;
        Picture picture = readPicture(path, wish, *request);
        QMetaObject::invokeMethod(
            this, [this, request, picture = std::move(picture)] { finish(request, picture); });
    });
}

void PictureLoader::cancel()
{
    if (current_)
        *current_ = true;
    current_.reset();
}

void PictureLoader::finish(const Cancellation& request, const Picture& picture)
{
    if (request != current_)
        return;
    current_.reset();
    emit loaded(picture);
}
