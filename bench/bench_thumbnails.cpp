// Thumbnails per second of decode time, beside QImageReader alone at the same scaled size.

#include "bench/stopwatch.h"
#include "browser/thumbnail.h"

#include <QGuiApplication>
#include <QImageReader>
#include <QTemporaryDir>

namespace
{

QString makePicture(const QTemporaryDir& folder, const char* name, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = qRgb(x * 255 / image.width(), y * 255 / image.height(), (x * y) & 0xff);
    }
    const QString path = folder.filePath(QString::fromLatin1(name));
    image.save(path);
    return path;
}

void bench(const char* what, const QString& path, QSize size)
{
    constexpr int Runs = 15;
    const double ours = medianMilliseconds(Runs, [&path] { readThumbnail(path, 1); });
    const double bare = medianMilliseconds(Runs, [&path, size] {
        QImageReader reader(path);
        reader.setScaledSize(thumbnailSize(size, ThumbnailSide));
        reader.read();
    });
    printRow(what, 1000 / ours, "/s", "QImageReader, scaled", 1000 / bare);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QTemporaryDir folder;
    const QSize camera(4000, 3000);
    bench("thumbnails, JPEG of 12 Mpx", makePicture(folder, "camera.jpg", camera), camera);
    const QSize screen(1280, 960);
    bench("thumbnails, PNG of 1.2 Mpx", makePicture(folder, "screen.png", screen), screen);
    return 0;
}
