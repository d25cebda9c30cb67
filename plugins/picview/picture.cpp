#include "plugins/picview/picture.h"

#include "plugins/support/plugintexts.h"
#include "plugins/support/regularopen.h"

#include <QFile>
#include <QImageReader>

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

QSize decodedSize(QSize size, QSize box)
{
    return box.isEmpty() ? largestSensible(size) : fittingSize(size, box);
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

Picture decode(QImageReader& reader, QSize box)
{
    const QSize stored = reader.size();
    if (stored.isValid() && pixels(stored) > MaxPicturePixels)
        return withProblem(tooLarge(stored));
    const bool turned = (reader.transformation() & QImageIOHandler::TransformationRotate90) != 0;
    Picture picture;
    picture.size = turned ? stored.transposed() : stored;
    picture.animated =
        reader.supportsAnimation() && reader.imageCount() != 1 && pixels(stored) <= MaxMovingPixels;
    if (stored.isValid()) {
        const QSize wanted = decodedSize(picture.size, box);
        if (wanted != picture.size)
            reader.setScaledSize(turned ? wanted.transposed() : wanted);
    }
    picture.image = reader.read();
    if (picture.image.isNull())
        return withProblem(problemOf(reader));
    // Some formats do not tell their size before.
    if (!stored.isValid()) {
        picture.size = picture.image.size();
        picture.image = picture.image.scaled(decodedSize(picture.size, box), Qt::IgnoreAspectRatio,
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

Picture readPicture(const QString& path, QSize box, const std::atomic<bool>& cancelled)
{
    CancellableFile file(cancelled);
    QString problem;
    if (!openWithProblem(file, path, problem))
        return withProblem(problem);
    if (file.size() == 0)
        return withProblem(pluginTexts().fileEmpty);
    if (file.size() > MaxPictureBytes)
        return withProblem(pluginTexts().pictureFileTooLarge);
    QImageReader::setAllocationLimit(DecodingMegabytes);
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    return decode(reader, box);
}
