// What happens when a tick of the thumbnail loader comes while a picture is being read. A reader of
// a picture format of this test's own lets it come.

#include "browser/filebrowserftab.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/testmain.h"

#include <QImageIOPlugin>
#include <QTimer>

#include <functional>
#include <memory>

namespace
{

constexpr char Signature[] = "SLOWPICTURE";

int reads = 0;
std::function<void()> whileReading;

} // namespace

class SlowPictureHandler : public QImageIOHandler
{
public:
    bool canRead() const override { return device()->peek(sizeof Signature - 1) == Signature; }

    bool read(QImage* image) override
    {
        ++reads;
        if (whileReading)
            whileReading();
        *image = QImage(64, 48, QImage::Format_RGB32);
        image->fill(Qt::yellow);
        return true;
    }
};

class SlowPicturePlugin : public QImageIOPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QImageIOHandlerFactoryInterface_iid FILE "slowpicture.json")

public:
    Capabilities capabilities(QIODevice* device, const QByteArray& /*format*/) const override
    {
        const bool known = device != nullptr && device->isReadable() &&
                           device->peek(sizeof Signature - 1) == Signature;
        return known ? CanRead : Capability(0);
    }

    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override
    {
        auto handler = std::make_unique<SlowPictureHandler>();
        handler->setDevice(device);
        handler->setFormat(format);
        return handler.release();
    }
};

Q_IMPORT_PLUGIN(SlowPicturePlugin)

class tst_PreviewGuard : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pictureIsReadOnceForSeveralAssociations();
    void pictureIsReadOnceForSeveralListings();
    void tickDuringAReadAdvancesButReadsNothing();
};

void tst_PreviewGuard::init()
{
    reads = 0;
    whileReading = nullptr;
}

void tst_PreviewGuard::cleanup()
{
    whileReading = nullptr;
}

void tst_PreviewGuard::pictureIsReadOnceForSeveralAssociations()
{
    const PanelFixture panel(true);
    for (const int icon : {2, 3, 2, 2})
        panel.associate(QStringLiteral("JPG"), icon);
    panel.files().write(QStringLiteral("a.jpg"), Signature);
    panel->setDir(panel.files().path(), 0);
    QTRY_VERIFY(!panel.previewTimer()->isActive());
    QCOMPARE(panel.icon(QStringLiteral("a.jpg")), QStringLiteral("other"));
    QCOMPARE(reads, 1);
}

void tst_PreviewGuard::pictureIsReadOnceForSeveralListings()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("JPG"), 2);
    panel.files().write(QStringLiteral("a.jpg"), Signature);
    for (int listing = 0; listing < 3; ++listing) {
        panel->setDir(panel.files().path(), 0);
        QTRY_COMPARE(panel.icon(QStringLiteral("a.jpg")), QStringLiteral("other"));
    }
    QCOMPARE(reads, 1);
}

void tst_PreviewGuard::tickDuringAReadAdvancesButReadsNothing()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("JPG"), 2);
    for (const char* name : {"1.jpg", "2.jpg", "3.jpg", "4.jpg"})
        panel.files().write(QLatin1String(name), Signature);
    int readsInside = -1;
    whileReading = [&panel, &readsInside] {
        whileReading = nullptr;
        panel->LoadPreview();
        readsInside = reads;
    };
    panel->setDir(panel.files().path(), 0);
    QTRY_VERIFY(!panel.previewTimer()->isActive());
    QCOMPARE(readsInside, 1);
    // The row of the tick that came too early was passed over.
    QCOMPARE(panel.icon(QStringLiteral("1.jpg")), QStringLiteral("other"));
    QCOMPARE(panel.icon(QStringLiteral("2.jpg")), QStringLiteral("mime/1/2.png"));
    QCOMPARE(panel.icon(QStringLiteral("3.jpg")), QStringLiteral("other"));
    QCOMPARE(panel.icon(QStringLiteral("4.jpg")), QStringLiteral("other"));
    QCOMPARE(reads, 3);
}

QUARN_TEST_MAIN(tst_PreviewGuard)
#include "tst_previewguard.moc"
