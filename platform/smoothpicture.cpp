#include "platform/smoothpicture.h"

#include <QImageIOHandler>

#include <algorithm>
#include <vector>

namespace
{

bool isTurned(const QImageReader& reader)
{
    return reader.autoTransform() &&
           (reader.transformation() & QImageIOHandler::TransformationRotate90) != 0;
}

/// How many pixels of a row or column become one at first: as many as leave twice those wanted.
int blockSide(int pixels, int wanted)
{
    return std::max(pixels / (2 * wanted), 1);
}

/// A picture of one bit a pixel with whole blocks of pixels made one. The bits that are set are
/// counted, so it takes no more memory than the result.
QImage countedBlocks(const QImage& bits, int across, int down)
{
    const QRgb unset = bits.colorTable().value(0, qRgb(0, 0, 0));
    const QRgb set = bits.colorTable().value(1, qRgb(255, 255, 255));
    const auto mixed = [unset, set](int share, int whole) {
        const auto part = [share, whole](int from, int to) {
            return from + (to - from) * share / whole;
        };
        return qRgba(part(qRed(unset), qRed(set)), part(qGreen(unset), qGreen(set)),
                     part(qBlue(unset), qBlue(set)), part(qAlpha(unset), qAlpha(set)));
    };
    const QSize size((bits.width() + across - 1) / across, (bits.height() + down - 1) / down);
    QImage result(size, QImage::Format_ARGB32);
    if (result.isNull())
        return result;
    std::vector<int> counts(size_t(size.width()));
    for (int row = 0; row < size.height(); ++row) {
        std::fill(counts.begin(), counts.end(), 0);
        const int top = row * down;
        const int bottom = std::min(top + down, bits.height());
        for (int y = top; y < bottom; ++y) {
            const uchar* line = bits.constScanLine(y);
            for (int x = 0; x < bits.width(); ++x)
                counts[size_t(x / across)] += (line[x / 8] >> (7 - x % 8)) & 1;
        }
        auto* pixels = reinterpret_cast<QRgb*>(result.scanLine(row));
        for (int column = 0; column < size.width(); ++column) {
            const int width = std::min(across, bits.width() - column * across);
            pixels[column] = mixed(counts[size_t(column)], width * (bottom - top));
        }
    }
    return result;
}

/// The toolkit scales all other pictures smoothly; of these it leaves out most of the pixels.
QImage smoothBits(const QImage& picture, QSize size)
{
    const QImage bits = picture.format() == QImage::Format_Mono
                            ? picture
                            : picture.convertToFormat(QImage::Format_Mono);
    const int across = blockSide(bits.width(), size.width());
    const int down = blockSide(bits.height(), size.height());
    const bool isOpaque = !bits.hasAlphaChannel();
    return countedBlocks(bits, across, down)
        .convertToFormat(isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied)
        .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

bool isOneBit(QImage::Format format)
{
    return format == QImage::Format_Mono || format == QImage::Format_MonoLSB;
}

} // namespace

QSize sizeToBe(const QImageReader& reader)
{
    const QSize stored = reader.size();
    return isTurned(reader) ? stored.transposed() : stored;
}

QImage readSmooth(QImageReader& reader, QSize size)
{
    if (!size.isValid() || size == sizeToBe(reader))
        return reader.read();
    // Without the decoder's help the toolkit decodes the whole as well.
    const bool helps = reader.supportsOption(QImageIOHandler::ScaledSize);
    if (helps && !isOneBit(reader.imageFormat())) {
        reader.setScaledSize(isTurned(reader) ? size.transposed() : size);
        return reader.read();
    }
    const QImage picture = reader.read();
    if (picture.isNull() || picture.size() == size)
        return picture;
    if (isOneBit(picture.format()))
        return smoothBits(picture, size);
    return picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}
