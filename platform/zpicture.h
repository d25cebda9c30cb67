#pragma once

#include <QPixmap>
#include <QString>

#include <memory>

/// A picture that is read from its file when it is named, and decoded when it is first shown: what
/// happens to the file in between does not matter, and what nobody looks at costs next to nothing.
/// Copies share the picture and the work.
class ZPicture
{
public:
    ZPicture() = default;
    // A picture that is decoded already does wherever one is expected.
    // NOLINTNEXTLINE(google-explicit-constructor)
    ZPicture(const QPixmap& pixmap);

    /// The picture file `path`, or its variant for a dense screen, as loadPixmap() finds it.
    static ZPicture fromFile(const QString& path);

    /// Puts `other` in the place of this picture. Should it turn out to be none, this one stays.
    void cover(const ZPicture& other);

    /// Null when there is no picture.
    QPixmap pixmap() const;

private:
    struct Content;
    std::shared_ptr<Content> content_;
};
