#include "browser/filebrowserftab.h"
#include "browser/thumbnail.h"
#include "files/filehandle.h"
#include "platform/zpixmap.h"
#include "tests/browser/panelfixture.h"
#include "tests/browser/picturefiles.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

#include <QDir>
#include <QHash>
#include <QSignalSpy>
#include <QTimer>

#include <array>
#include <functional>
#include <sys/inotify.h>
#include <unistd.h>

namespace
{

constexpr int PictureNumber = 2;

void writePicture(const PanelFixture& panel, const QString& name, const QColor& colour = Qt::red,
                  QSize size = {64, 48})
{
    panel.files().write(name, pictureFile(size, "png", colour));
}

bool waitForLoader(const PanelFixture& panel)
{
    constexpr int Milliseconds = 30000;
    return QTest::qWaitFor([&panel] { return !panel.previewTimer()->isActive(); }, Milliseconds);
}

/// Lists a panel's folder anew and waits for the loader's end.
bool loadAll(const PanelFixture& panel)
{
    panel->setDir(panel.files().path(), 0);
    return waitForLoader(panel);
}

/// Runs `action` once, right after the loader's tick of that number, counted from 1.
void afterTick(const PanelFixture& panel, int number, const std::function<void()>& action)
{
    QObject::connect(panel.previewTimer(), &QTimer::timeout, panel.panel(),
                     [number, action, tick = 0]() mutable {
                         if (++tick == number)
                             action();
                     });
}

QSize shownSize(const PanelFixture& panel, const QString& name)
{
    return pixmapSize(panel->item(panel.row(name))->pixmap(0));
}

QColor shownColour(const PanelFixture& panel, const QString& name)
{
    return panel->item(panel.row(name))->pixmap(0).toImage().pixelColor(0, 0);
}

/// What is no picture, for all that its name says.
void makeOddPicture(const ScratchFolder& files, const QString& name)
{
    const QHash<QString, QByteArray> contents = {
        {QStringLiteral("empty.jpg"), QByteArray()},
        {QStringLiteral("text.jpg"), "A letter."},
        {QStringLiteral("cut.jpg"), pictureFile({64, 48}, "jpg", Qt::red).left(100)},
        {QStringLiteral("locked.jpg"), pictureFile({64, 48}, "jpg", Qt::red)},
        {QStringLiteral("huge.jpg"), jpegThatClaims({20000, 20000})}};
    const QHash<QString, QString> links = {
        {QStringLiteral("dangling.jpg"), QStringLiteral("nowhere")},
        {QStringLiteral("zero.jpg"), QStringLiteral("/dev/zero")}};
    if (contents.contains(name))
        files.write(name, contents.value(name));
    else if (links.contains(name))
        files.makeLink(name, links.value(name));
    else if (name == QLatin1String("fifo.jpg"))
        files.makeFifo(name);
    else if (name == QLatin1String("long.jpg"))
        files.writeSparse(name, qint64(5) << 30);
    else
        files.makeFolder(name);
    if (name == QLatin1String("locked.jpg"))
        files.setMode(name, 0);
}

/// Counts how often the files in a folder are opened.
class OpenCount
{
public:
    explicit OpenCount(const QString& folder) : watch_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        [this, &folder] {
            QVERIFY(inotify_add_watch(watch_.get(), QFile::encodeName(folder).constData(),
                                      IN_OPEN) >= 0);
        }();
    }

    int of(const QByteArray& name) const
    {
        readEvents();
        return counts_.value(name);
    }

private:
    void readEvents() const
    {
        alignas(inotify_event) std::array<char, 4096> buffer{};
        for (;;) {
            const ssize_t size = read(watch_.get(), buffer.data(), buffer.size());
            if (size <= 0)
                return;
            for (ssize_t at = 0; at < size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(&buffer[size_t(at)]);
                if (event->len > 0)
                    ++counts_[QByteArray(event->name)];
                at += ssize_t(sizeof(inotify_event)) + ssize_t(event->len);
            }
        }
    }

    FileHandle watch_;
    mutable QHash<QByteArray, int> counts_;
};

int shownPreviews(const PanelFixture& panel)
{
    int previews = 0;
    for (const QString& name : panel.names())
        previews += panel.icon(name) == QLatin1String("other") ? 1 : 0;
    return previews;
}

} // namespace

class tst_Preview : public QObject
{
    Q_OBJECT

private slots:
    void loaderTicksEveryFiftyMilliseconds();
    void compactModeLoadsNothing();
    void oneRowIsLoadedATick();
    void firstRowIsNeverLoaded();
    void loaderOfAnEmptyListStops();
    void loaderOfALoneBackEntryStops();

    void pictureBecomesAThumbnail_data();
    void pictureBecomesAThumbnail();
    void onlyPicturesAreLoaded_data();
    void onlyPicturesAreLoaded();
    void linkToAPictureIsLoaded();
    void nothingElseChangesWhileLoading();
    void highlightStaysInView();

    void thumbnailIsKeptAcrossListings();
    void keptPixmapIsShownWithoutReading();
    void samePictureElsewhereIsAnother();

    void whatIsNoPictureKeepsItsIconAndOthersGoOn_data();
    void whatIsNoPictureKeepsItsIconAndOthersGoOn();
    void whatIsNoPictureIsReadOnce();
    void hugePictureTakesLittleMemory();
    void vanishingPicturesDoNoHarm();
    void newListingStartsAnew();
    void leavingFullInformationEndsLoading();
    void panelMayGoWhileLoading();
};

void tst_Preview::loaderTicksEveryFiftyMilliseconds()
{
    const PanelFixture panel(true);
    QVERIFY(!panel.previewTimer()->isActive());
    writePicture(panel, QStringLiteral("a.png"));
    panel->setDir(panel.files().path(), 0);
    QVERIFY(panel.previewTimer()->isActive());
    QCOMPARE(panel.previewTimer()->interval(), 50);
    QVERIFY(!panel.previewTimer()->isSingleShot());
    QVERIFY(waitForLoader(panel));
}

void tst_Preview::compactModeLoadsNothing()
{
    const PanelFixture panel;
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    writePicture(panel, QStringLiteral("a.png"));
    panel->setDir(panel.files().path(), 0);
    QVERIFY(!panel.previewTimer()->isActive());
    for (int tick = 0; tick < 5; ++tick)
        panel->LoadPreview();
    QCOMPARE(panel.icon(QStringLiteral("a.png")), QStringLiteral("mime/0/2.png"));
    QPixmap kept;
    QVERIFY(!ZPixmapCache::find(panel.files().path(QStringLiteral("a.png")), kept));
}

void tst_Preview::oneRowIsLoadedATick()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    for (int i = 0; i < 5; ++i)
        writePicture(panel, QStringLiteral("%1.png").arg(i));
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(shownPreviews(panel), 0);
    QStringList seen;
    connect(panel.previewTimer(), &QTimer::timeout, panel.panel(), [&seen, &panel] {
        QString previews;
        for (const QString& name : panel.names().mid(1))
            previews +=
                panel.icon(name) == QLatin1String("other") ? QLatin1Char('x') : QLatin1Char('-');
        seen.append(previews);
    });
    QVERIFY(waitForLoader(panel));
    // The last tick finds the last row done and stops the loader.
    QCOMPARE(seen.join(QLatin1Char(' ')), QStringLiteral("x---- xx--- xxx-- xxxx- xxxxx xxxxx"));
}

void tst_Preview::firstRowIsNeverLoaded()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral(""), PictureNumber);
    panel.files().write(QStringLiteral("dot."));
    QPixmap kept(20, 20);
    kept.fill(Qt::cyan);
    for (const char* name : {"..", "dot."})
        ZPixmapCache::insert(panel.files().path(QLatin1String(name)), kept);
    QVERIFY(loadAll(panel));
    QCOMPARE(shownSize(panel, QStringLiteral("dot.")), QSize(20, 20));
    QCOMPARE(panel.icon(QStringLiteral("..")), QStringLiteral("back.png"));
}

void tst_Preview::loaderOfAnEmptyListStops()
{
    const PanelFixture panel(true);
    panel->setDir(panel.files().path(QStringLiteral("missing")), 0);
    QVERIFY(panel.previewTimer()->isActive());
    QVERIFY(waitForLoader(panel));
    panel->LoadPreview();
    QCOMPARE(panel->count(), 0);
}

void tst_Preview::loaderOfALoneBackEntryStops()
{
    const PanelFixture panel(true);
    QVERIFY(loadAll(panel));
    QCOMPARE(panel.icon(QStringLiteral("..")), QStringLiteral("back.png"));
}

void tst_Preview::pictureBecomesAThumbnail_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("size");
    QTest::newRow("wide") << QSize(64, 48) << QSize(32, 24);
    QTest::newRow("high") << QSize(48, 64) << QSize(24, 32);
    QTest::newRow("square") << QSize(100, 100) << QSize(32, 32);
    QTest::newRow("small") << QSize(20, 10) << QSize(20, 10);
    QTest::newRow("just fits") << QSize(32, 32) << QSize(32, 32);
    QTest::newRow("large") << QSize(2000, 1500) << QSize(32, 24);
    QTest::newRow("line") << QSize(1000, 2) << QSize(32, 1);
}

void tst_Preview::pictureBecomesAThumbnail()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    QFETCH(QSize, picture);
    const QString name = QStringLiteral("a.PnG");
    writePicture(panel, name, Qt::magenta, picture);
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.icon(name), QStringLiteral("mime/1/2.png"));
    QVERIFY(waitForLoader(panel));
    QCOMPARE(panel.icon(name), QStringLiteral("other"));
    QTEST(shownSize(panel, name), "size");
    QCOMPARE(shownColour(panel, name), QColor(Qt::magenta));
}

void tst_Preview::onlyPicturesAreLoaded_data()
{
    QTest::addColumn<QList<int>>("icons");
    QTest::addColumn<QString>("icon");
    QTest::newRow("no entry") << QList<int>{} << QStringLiteral("browser/1/file.png");
    QTest::newRow("another icon") << QList<int>{3} << QStringLiteral("mime/1/3.png");
    QTest::newRow("two other icons") << QList<int>{3, 12} << QStringLiteral("mime/1/12.png");
    QTest::newRow("picture") << QList<int>{2} << QStringLiteral("other");
    QTest::newRow("picture twice") << QList<int>{2, 2} << QStringLiteral("other");
    QTest::newRow("picture first") << QList<int>{2, 3} << QStringLiteral("other");
    QTest::newRow("picture last") << QList<int>{3, 2} << QStringLiteral("other");
    QTest::newRow("picture between") << QList<int>{3, 2, 4} << QStringLiteral("other");
}

void tst_Preview::onlyPicturesAreLoaded()
{
    QFETCH(QList<int>, icons);
    const PanelFixture panel(true);
    for (const int icon : icons) {
        panel.associate(QStringLiteral("PNG"), icon);
        panel.associate(QStringLiteral("XYZ"), PictureNumber);
    }
    writePicture(panel, QStringLiteral("a.png"));
    QVERIFY(loadAll(panel));
    QTEST(panel.icon(QStringLiteral("a.png")), "icon");
}

void tst_Preview::linkToAPictureIsLoaded()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    writePicture(panel, QStringLiteral("picture"));
    panel.files().makeLink(QStringLiteral("link.png"), QStringLiteral("picture"));
    QVERIFY(loadAll(panel));
    QCOMPARE(shownSize(panel, QStringLiteral("link.png")), QSize(32, 24));
    QCOMPARE(panel.icon(QStringLiteral("picture")), QStringLiteral("browser/1/file.png"));
}

void tst_Preview::nothingElseChangesWhileLoading()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    for (int i = 0; i < 3; ++i)
        writePicture(panel, QStringLiteral("%1.png").arg(i));
    panel->setDir(panel.files().path(), 2);
    const PanelSignals told(panel);
    const QSignalSpy highlighted(panel.panel(), &ZListBox::highlighted);
    const QStringList names = panel.names();
    const QString detail = panel.detail(QStringLiteral("1.png"));
    QVERIFY(waitForLoader(panel));
    QCOMPARE(shownPreviews(panel), 3);
    QCOMPARE(told.all(), QStringList());
    QCOMPARE(highlighted.count(), 0);
    QCOMPARE(panel.names(), names);
    QCOMPARE(panel.detail(QStringLiteral("1.png")), detail);
    QCOMPARE(panel->curIndex, 2);
    QCOMPARE(panel->curFile, panel.files().path(QStringLiteral("1.png")));
}

void tst_Preview::highlightStaysInView()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    for (int i = 0; i < 12; ++i)
        writePicture(panel, QString::number(10 + i) + QStringLiteral(".png"), Qt::red, {32, 32});
    panel->setDir(panel.files().path(), 12);
    QVERIFY(waitForLoader(panel));
    QCOMPARE(shownPreviews(panel), 12);
    QCOMPARE(panel->currentItem(), 12);
    QVERIFY(panel->itemVisible(12));
}

void tst_Preview::thumbnailIsKeptAcrossListings()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    writePicture(panel, QStringLiteral("a.png"), Qt::red);
    QVERIFY(loadAll(panel));
    writePicture(panel, QStringLiteral("a.png"), Qt::blue);
    QVERIFY(loadAll(panel));
    QCOMPARE(shownSize(panel, QStringLiteral("a.png")), QSize(32, 24));
    QCOMPARE(shownColour(panel, QStringLiteral("a.png")), QColor(Qt::red));
}

void tst_Preview::keptPixmapIsShownWithoutReading()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    panel.files().write(QStringLiteral("a.png"), "no picture");
    QPixmap kept(30, 11);
    kept.fill(Qt::green);
    ZPixmapCache::insert(panel.files().path(QStringLiteral("a.png")), kept);
    QVERIFY(loadAll(panel));
    QCOMPARE(shownSize(panel, QStringLiteral("a.png")), QSize(30, 11));
}

void tst_Preview::samePictureElsewhereIsAnother()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    writePicture(panel, QStringLiteral("a.png"), Qt::red);
    writePicture(panel, QStringLiteral("in/a.png"), Qt::blue);
    QVERIFY(loadAll(panel));
    panel->setDir(panel.files().path(QStringLiteral("in")), 0);
    QVERIFY(waitForLoader(panel));
    QCOMPARE(shownColour(panel, QStringLiteral("a.png")), QColor(Qt::blue));
}

void tst_Preview::whatIsNoPictureKeepsItsIconAndOthersGoOn_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("icon");
    QTest::newRow("no bytes") << QStringLiteral("empty.jpg") << QStringLiteral("mime/1/2.png");
    QTest::newRow("text") << QStringLiteral("text.jpg") << QStringLiteral("mime/1/2.png");
    QTest::newRow("cut") << QStringLiteral("cut.jpg") << QStringLiteral("mime/1/2.png");
    QTest::newRow("locked") << QStringLiteral("locked.jpg") << QStringLiteral("mime/1/2.png");
    QTest::newRow("5 GiB") << QStringLiteral("long.jpg") << QStringLiteral("mime/1/2.png");
    QTest::newRow("huge") << QStringLiteral("huge.jpg") << QStringLiteral("mime/1/2.png");
    QTest::newRow("FIFO") << QStringLiteral("fifo.jpg") << QStringLiteral("browser/1/device.png");
    QTest::newRow("dangling link")
        << QStringLiteral("dangling.jpg") << QStringLiteral("browser/1/device.png");
    QTest::newRow("endless device")
        << QStringLiteral("zero.jpg") << QStringLiteral("browser/1/device.png");
    QTest::newRow("folder") << QStringLiteral("folder.jpg")
                            << QStringLiteral("browser/1/folder.png");
}

void tst_Preview::whatIsNoPictureKeepsItsIconAndOthersGoOn()
{
    QFETCH(QString, name);
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("JPG"), PictureNumber);
    makeOddPicture(panel.files(), name);
    writePicture(panel, QStringLiteral("zz.jpg"));
    QVERIFY(loadAll(panel));
    QTEST(panel.icon(name), "icon");
    QCOMPARE(shownSize(panel, QStringLiteral("zz.jpg")), QSize(32, 24));
}

void tst_Preview::whatIsNoPictureIsReadOnce()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("JPG"), PictureNumber);
    for (const char* name : {"a.jpg", "last.jpg"})
        panel.files().write(QLatin1String(name), "no picture");
    const OpenCount opened(panel.files().path());
    for (int listing = 0; listing < 3; ++listing)
        QVERIFY(loadAll(panel));
    QCOMPARE(opened.of("a.jpg"), 1);
    QCOMPARE(opened.of("last.jpg"), 1);
    for (const char* name : {"a.jpg", "last.jpg"})
        QCOMPARE(panel.icon(QLatin1String(name)), QStringLiteral("mime/1/2.png"));
}

void tst_Preview::hugePictureTakesLittleMemory()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    panel.files().write(QStringLiteral("huge.png"), blackPng({20000, 20000}));
    writePicture(panel, QStringLiteral("zz.png"));
    const PeakMemory memory;
    QVERIFY(loadAll(panel));
    QVERIFY2(memory.growth() < MostMemory, qPrintable(QString::number(memory.growth())));
    QCOMPARE(panel.icon(QStringLiteral("huge.png")), QStringLiteral("mime/1/2.png"));
    QCOMPARE(shownSize(panel, QStringLiteral("zz.png")), QSize(32, 24));
}

void tst_Preview::vanishingPicturesDoNoHarm()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    for (int i = 0; i < 4; ++i)
        writePicture(panel, QStringLiteral("in/%1.png").arg(i));
    panel->setDir(panel.files().path(QStringLiteral("in")), 0);
    afterTick(panel, 1, [&panel] {
        QVERIFY(QDir(panel.files().path(QStringLiteral("in"))).removeRecursively());
    });
    QVERIFY(waitForLoader(panel));
    QCOMPARE(panel->count(), 5);
    QCOMPARE(shownPreviews(panel), 1);
    QCOMPARE(panel.icon(QStringLiteral("3.png")), QStringLiteral("mime/1/2.png"));
}

void tst_Preview::newListingStartsAnew()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    for (int i = 0; i < 4; ++i) {
        writePicture(panel, QStringLiteral("%1.png").arg(i), Qt::red);
        writePicture(panel, QStringLiteral("in/%1.png").arg(i), Qt::blue);
    }
    panel->setDir(panel.files().path(), 0);
    int before = 0;
    int after = -1;
    afterTick(panel, 3, [&panel, &before, &after] {
        before = shownPreviews(panel);
        panel->setDir(panel.files().path(QStringLiteral("in")), 0);
        after = shownPreviews(panel);
    });
    QVERIFY(waitForLoader(panel));
    QCOMPARE(before, 2);
    QCOMPARE(after, 0);
    for (int i = 0; i < 4; ++i)
        QCOMPARE(shownColour(panel, QStringLiteral("%1.png").arg(i)), QColor(Qt::blue));
}

void tst_Preview::leavingFullInformationEndsLoading()
{
    const PanelFixture panel(true);
    panel.associate(QStringLiteral("PNG"), PictureNumber);
    for (int i = 0; i < 4; ++i)
        writePicture(panel, QStringLiteral("%1.png").arg(i));
    panel->setDir(panel.files().path(), 0);
    panel->setFullInf();
    panel->setDir(panel->curPath, panel->curIndex);
    QVERIFY(waitForLoader(panel));
    QCOMPARE(shownPreviews(panel), 0);
    QCOMPARE(panel.icon(QStringLiteral("3.png")), QStringLiteral("mime/0/2.png"));
}

void tst_Preview::panelMayGoWhileLoading()
{
    int ticks = 0;
    int before = -1;
    {
        const PanelFixture panel(true);
        panel.associate(QStringLiteral("PNG"), PictureNumber);
        for (int i = 0; i < 4; ++i)
            writePicture(panel, QStringLiteral("%1.png").arg(i));
        connect(panel.previewTimer(), &QTimer::timeout, panel.panel(), [&ticks] { ++ticks; });
        panel->setDir(panel.files().path(), 0);
        QVERIFY(QTest::qWaitFor([&ticks] { return ticks > 0; }));
        QVERIFY(panel.previewTimer()->isActive());
        before = ticks;
    }
    QCoreApplication::processEvents();
    QCOMPARE(ticks, before);
}

QUARN_TEST_MAIN(tst_Preview)
#include "tst_preview.moc"
