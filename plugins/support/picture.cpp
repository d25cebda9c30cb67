#include "plugins/support/picture.h"

#include "platform/smoothpicture.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/regularopen.h"

#include <QFile>
#include <QImageReader>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace
{

/// Megabytes for one picture while it is decoded: all pixels of the largest, and room to work.
constexpr int DecodingMegabytes = 320;

/// A file that ends for its reader when that is told to stop. It is how to interrupt a decoder.
class CancellableFile : public QFile
{
public:
    explicit CancellableFile(const std::atomic<bool>& cancelled) : cancelled_(cancelled) {}

protected:
    qint64 readData(char* data, qint64 size) override
    {
        return cancelled_ ? -1 : QFile::readData(data, size);
    }

private:
    const std::atomic<bool>& cancelled_;
};

qint64 pixels(QSize size)
{
    return qint64(size.width()) * size.height();
}

QString tooLarge(QSize size)
{
    return pluginTexts().pictureTooLarge.arg(QString::number(size.width()),
                                             QString::number(size.height()));
}

QSize largestSensible(QSize size)
{
    const qint64 all = pixels(size);
    if (all <= MaxDecodedPixels)
        return size;
    const double factor = std::sqrt(double(MaxDecodedPixels) / double(all));
    return {std::max(int(size.width() * factor), 1), std::max(int(size.height() * factor), 1)};
}

QSize decodedSize(QSize size, const PictureWish& wish)
{
    if (wish.box.isEmpty())
        return largestSensible(size);
    return wish.fills ? fillingSize(size, wish.box) : fittingSize(size, wish.box);
}

/// The size of what has one size after a quarter turn or three.
QSize turned(QSize size, int quarterTurns)
{
    return quarterTurns % 2 != 0 ? size.transposed() : size;
}

QString problemOf(const QImageReader& reader)
{
    if (reader.error() == QImageReader::UnsupportedFormatError)
        return pluginTexts().notAPicture;
    return pluginTexts().pictureDamaged;
}

Picture withProblem(const QString& problem)
{
    Picture picture;
    picture.problem = problem;
    return picture;
}

Picture decode(QImageReader& reader, const PictureWish& wish)
{
    const QSize stored = sizeToBe(reader);
    if (stored.isValid() && pixels(stored) > MaxPicturePixels)
        return withProblem(tooLarge(stored));
    Picture picture;
    picture.size = turned(stored, wish.quarterTurns);
    picture.animated =
        reader.supportsAnimation() && reader.imageCount() != 1 && pixels(stored) <= MaxMovingPixels;
    const QSize wanted = stored.isValid() ? decodedSize(picture.size, wish) : QSize();
    picture.image = readSmooth(reader, turned(wanted, wish.quarterTurns));
    if (picture.image.isNull())
        return withProblem(problemOf(reader));
    picture.image = turnedBy(picture.image, wish.quarterTurns);
    // Of one bit a pixel the toolkit would leave out most when it draws it smaller.
    if (picture.image.depth() == 1)
        picture.image = picture.image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    // Some formats do not tell their size before.
    if (!stored.isValid()) {
        picture.size = picture.image.size();
        picture.image = picture.image.scaled(decodedSize(picture.size, wish), Qt::IgnoreAspectRatio,
                                             Qt::SmoothTransformation);
    }
    return picture;
}

} // namespace

QSize fittingSize(QSize picture, QSize box)
{
    if (picture.width() <= box.width() && picture.height() <= box.height())
        return picture;
    return picture.scaled(box, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

QSize fillingSize(QSize picture, QSize box)
{
    const QSize size = picture.scaled(box, Qt::KeepAspectRatioByExpanding);
    return size.width() >= picture.width() ? picture : size;
}

QImage turnedBy(const QImage& image, int quarterTurns)
{
    constexpr double QuarterTurn = 90;
    return quarterTurns == 0 ? image
                             : image.transformed(QTransform().rotate(quarterTurns * QuarterTurn));
}

Picture readPicture(const QString& path, const PictureWish& wish,
                    const std::atomic<bool>& cancelled)
{
    CancellableFile file(cancelled);
    QString problem;
    if (!openWithProblem(file, path, problem))
        return withProblem(problem);
    return readPicture(file, wish);
}

Picture readPicture(QIODevice& device, const PictureWish& wish)
{
    if (device.size() == 0)
        return withProblem(pluginTexts().fileEmpty);
    if (device.size() > MaxPictureBytes)
        return withProblem(pluginTexts().pictureFileTooLarge);
    QImageReader::setAllocationLimit(DecodingMegabytes);
    QImageReader reader(&device);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    return decode(reader, wish);
}
