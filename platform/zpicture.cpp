#include "platform/zpicture.h"

#include "platform/zpixmap.h"

#include <QList>

/// Either the variants of a file, the preferred first, or a picture that covers another one.
struct ZPicture::Content {
    QPixmap pixmap;
    QList<PictureFile> variants;
    ZPicture top;
    ZPicture below;
    int depth = 0; ///< how many may have to be tried; 0: the pixmap is what there is
};

ZPicture::ZPicture(const QPixmap& pixmap)
{
    if (!pixmap.isNull())
        content_ = std::make_shared<Content>(Content{pixmap, {}, {}, {}, 0});
}

ZPicture ZPicture::fromFile(const QString& path)
{
    ZPicture picture;
    const QList<PictureFile> variants = readPictureFiles(path);
    if (!variants.isEmpty())
        picture.content_ = std::make_shared<Content>(Content{QPixmap(), variants, {}, {}, 1});
    return picture;
}

void ZPicture::cover(const ZPicture& other)
{
    if (other.content_ == nullptr)
        return;
    // Each load of a long series may fail, so each keeps the one before; but not without end.
    constexpr int DeepestPile = 16;
    const ZPicture below =
        content_ != nullptr && content_->depth >= DeepestPile ? ZPicture(pixmap()) : *this;
    const int depth = below.content_ != nullptr ? below.content_->depth : 0;
    content_ = std::make_shared<Content>(Content{QPixmap(), {}, other, below, depth + 1});
}

QPixmap ZPicture::pixmap() const
{
    if (content_ == nullptr)
        return {};
    Content& content = *content_;
    if (content.depth > 0) {
        for (const PictureFile& file : std::as_const(content.variants)) {
            content.pixmap = decoded(file);
            if (!content.pixmap.isNull())
                break;
        }
        if (content.pixmap.isNull())
            content.pixmap = content.top.pixmap();
        if (content.pixmap.isNull())
            content.pixmap = content.below.pixmap();
        content = Content{content.pixmap, {}, {}, {}, 0};
    }
    return content.pixmap;
}
