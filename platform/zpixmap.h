#pragma once

#include <QByteArray>
#include <QList>
#include <QPixmap>
#include <QString>

class QPainter;

/// Loads the picture file `path` into `pixmap`. On a dense screen "NAME@2x.EXT" or "NAME@3x.EXT"
/// beside it is preferred, so that the pixmap keeps its size in screen pixels and gains detail.
/// Returns false, and leaves `pixmap` as it was, when there is no such picture or one of more than
/// 32 megapixels.
bool loadPixmap(QPixmap& pixmap, const QString& path);

/// Draws a picture with its corner at `corner`. If the scale has become another one since it was
/// loaded, its variant for that is taken, as long as it is at hand.
void drawPicture(QPainter& painter, QPoint corner, const QPixmap& picture);

/// What a picture file holds, not decoded yet. `density`: its pixels in a pixel of the screen.
struct PictureFile {
    QByteArray bytes;
    int density = 1;
    QString path; ///< as it was named, without the density
};

/// The variants of a picture file that loadPixmap() would try, in that order. What cannot be read
/// is not among them.
QList<PictureFile> readPictureFiles(const QString& path);
/// Null when these bytes are no picture, or one whose few bytes unfold to absurdly many pixels.
QPixmap decoded(const PictureFile& file);

/// The width and height of a pixmap in pixels of the screen, whatever its density. 0 x 0 if null.
QSize pixmapSize(const QPixmap& pixmap);

/// The pixmaps that the whole process keeps at hand, by file path. The least recently used go when
/// the limit is reached. (The toolkit's own cache empties itself bit by bit when a program idles,
/// waking it up to do so; this one keeps what it has and never wakes anybody.)
class ZPixmapCache
{
public:
    /// Fills `pixmap` and returns true when something is kept under `key`.
    static bool find(const QString& key, QPixmap& pixmap);
    /// Keeps a pixmap (a null one too). One larger than the whole cache is not kept.
    static void insert(const QString& key, const QPixmap& pixmap);
    /// The limit in kilobytes of picture data; 10240 at first. Each call overrides the last.
    static void setCacheLimit(int kilobytes);
    static int cacheLimit();
    static void clear();
};
