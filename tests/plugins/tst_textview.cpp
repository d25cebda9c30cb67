#include "platform/keymap.h"
#include "platform/zskinservice.h"
#include "plugins/support/textpane.h"
#include "plugins/textview/textwindow.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

#include <QWheelEvent>

#include <ctime>

/// The text viewer, driven by keys.
class tst_TextView : public QObject
{
    Q_OBJECT

private slots:
    void keysMoveThroughTheText_data();
    void keysMoveThroughTheText();
    void titleTellsHowFarOneIs();
    void pagesOverlapByARow();
    void longLinesAreSwitched_data();
    void longLinesAreSwitched();
    void longLinesAreMovedSideways();
    void lettersThatAreCutFadeAway();
    void linesThatAreWrittenFromTheRightBeginThere();
    void longLinesFromTheRightAreMovedTheOtherWay();
    void unusableFilesGiveAMessage_data();
    void unusableFilesGiveAMessage();
    void fileThatShrinksIsShownFromItsEnd();
    void fileThatGrowsIsReadOn();
    void hugeFileTakesNeitherTimeNorMemory();
    void fullScreenShowsMoreRows();
    void wheelAndTapsScroll();

private:
    /// Lines "0", "1" and so on.
    static QByteArray numbered(int count);
};

namespace
{

constexpr int HomeCode = 0x1010;
constexpr int EndCode = 0x1011;
constexpr int ManyRows = 100;

/// The viewer on the screen, showing a file.
class Viewer
{
public:
    explicit Viewer(const QString& path) : window(path)
    {
        window.show();
        [this] { QVERIFY(QTest::qWaitFor([this] { return keyReceiver() == &window; })); }();
    }

    QString first() const { return window.pane()->rows().front().text; }
    QString last() const { return window.pane()->rows().back().text; }
    int rows() const { return int(window.pane()->rows().size()); }

    TextWindow window;
};

/// What is drawn of a row, without the bar beside the rows.
QRect inkOfRow(const Viewer& viewer, int row)
{
    constexpr int Top = 2;
    constexpr int Bar = 5;
    auto* pane = viewer.window.pane();
    const int height = pane->fontMetrics().height();
    const QImage shown = pane->grab().toImage().convertToFormat(QImage::Format_RGB32);
    return inkBounds(shown, QRect(0, Top + row * height, shown.width() - Bar, height), Qt::white);
}

} // namespace

QByteArray tst_TextView::numbered(int count)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += QByteArray::number(i) + '\n';
    return text;
}

void tst_TextView::keysMoveThroughTheText_data()
{
    QTest::addColumn<QList<int>>("keys");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("pages");
    QTest::newRow("nothing") << QList<int>{} << 0 << 0;
    QTest::newRow("Down") << QList<int>{PhoneKey::Down, PhoneKey::Down} << 2 << 0;
    QTest::newRow("8") << QList<int>{'8', '8', '8'} << 3 << 0;
    QTest::newRow("Up") << QList<int>{'8', '8', PhoneKey::Up} << 1 << 0;
    QTest::newRow("2") << QList<int>{'8', '8', '2'} << 1 << 0;
    QTest::newRow("Up at the top") << QList<int>{PhoneKey::Up} << 0 << 0;
    QTest::newRow("PageDown") << QList<int>{PhoneKey::PageDown, PhoneKey::PageDown} << 0 << 2;
    QTest::newRow("Right") << QList<int>{PhoneKey::Right} << 0 << 1;
    QTest::newRow("6") << QList<int>{'6'} << 0 << 1;
    QTest::newRow("PageUp") << QList<int>{'6', '6', PhoneKey::PageUp} << 0 << 1;
    QTest::newRow("Left") << QList<int>{'6', '6', PhoneKey::Left} << 0 << 1;
    QTest::newRow("4") << QList<int>{'6', '6', '8', '4'} << 1 << 1;
    QTest::newRow("Home") << QList<int>{'6', '8', HomeCode} << 0 << 0;
    QTest::newRow("1") << QList<int>{'6', '8', '1'} << 0 << 0;
    QTest::newRow("unknown keys") << QList<int>{'8', '#', PhoneKey::Hide, 'x'} << 1 << 0;
}

void tst_TextView::keysMoveThroughTheText()
{
    QFETCH(QList<int>, keys);
    QFETCH(int, rows);
    QFETCH(int, pages);
    const ScratchFolder folder;
    folder.write("a.txt", numbered(1000));
    const Viewer viewer(folder.path("a.txt"));
    for (const int key : keys)
        pressKey(key);
    QCOMPARE(viewer.first(), QString::number(rows + pages * (viewer.rows() - 1)));
    for (const int key : {int(EndCode), int('7')}) {
        pressKey(key);
        QCOMPARE(viewer.last(), QString("999"));
        QCOMPARE(viewer.first(), QString::number(1000 - viewer.rows()));
        pressKey(PhoneKey::Down);
        pressKey(PhoneKey::PageDown);
        QCOMPARE(viewer.last(), QString("999"));
        pressKey('1');
    }
}

void tst_TextView::titleTellsHowFarOneIs()
{
    const ScratchFolder folder;
    folder.write("notes.txt", QByteArray("line\n").repeated(1000));
    folder.write("short.txt", "line\n");
    const Viewer viewer(folder.path("notes.txt"));
    QCOMPARE(viewer.window.mainWidgetTitle(), QString("notes.txt · 0%"));
    constexpr int Pages = 20;
    for (int page = 0; page < Pages; ++page)
        pressKey(PhoneKey::PageDown);
    // The rows in view are neither above nor below.
    const int percent = 100 * Pages * (viewer.rows() - 1) / (1000 - viewer.rows());
    QCOMPARE(viewer.window.mainWidgetTitle(), QString("notes.txt · %1%").arg(percent));
    pressKey(EndCode);
    QCOMPARE(viewer.window.mainWidgetTitle(), QString("notes.txt · 100%"));
    pressKey(PhoneKey::Up);
    QCOMPARE(viewer.window.mainWidgetTitle(), QString("notes.txt · 99%"));
    const Viewer other(folder.path("short.txt"));
    QCOMPARE(other.window.mainWidgetTitle(), QString("short.txt · 100%"));
}

void tst_TextView::pagesOverlapByARow()
{
    const ScratchFolder folder;
    folder.write("a.txt", numbered(1000));
    const Viewer viewer(folder.path("a.txt"));
    const QString last = viewer.last();
    pressKey(PhoneKey::PageDown);
    QCOMPARE(viewer.first(), last);
}

void tst_TextView::longLinesAreSwitched_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("0") << int('0');
    QTest::newRow("left soft key") << int(PhoneKey::SoftLeft);
}

void tst_TextView::longLinesAreSwitched()
{
    QFETCH(int, key);
    const ScratchFolder folder;
    const QByteArray line = QByteArray("some words ").repeated(30);
    folder.write("a.txt", line + '\n' + numbered(100));
    const Viewer viewer(folder.path("a.txt"));
    const QString broken = viewer.first();
    QVERIFY(broken.size() < 60);
    QVERIFY(broken.endsWith(' '));
    pressKey(key);
    QCOMPARE(viewer.first(), QString::fromLatin1(line));
    pressKey(key);
    QCOMPARE(viewer.first(), broken);
    // From within a line one gets to its start.
    pressKey(PhoneKey::Down);
    pressKey(key);
    QCOMPARE(viewer.first(), QString::fromLatin1(line));
}

void tst_TextView::longLinesAreMovedSideways()
{
    const ScratchFolder folder;
    folder.write("a.txt", QByteArray(50, 'W') + QByteArray(1000, '.'));
    Viewer viewer(folder.path("a.txt"));
    pressKey('0');
    const QImage start = viewer.window.grab().toImage();
    pressKey(PhoneKey::Right);
    QVERIFY(viewer.window.grab().toImage() != start);
    pressKey(PhoneKey::Left);
    pressKey(PhoneKey::Left);
    QCOMPARE(viewer.window.grab().toImage(), start);
    for (int i = 0; i < ManyRows; ++i)
        pressKey(PhoneKey::Right);
    // The end of the line is still in view.
    const QImage end = viewer.window.pane()->grab().toImage();
    pressKey(PhoneKey::Right);
    QCOMPARE(viewer.window.pane()->grab().toImage(), end);
    QVERIFY(!isPlain(end.convertToFormat(QImage::Format_RGB32), QRect(1, 1, 220, 30), Qt::white));
    pressKey('1');
    QCOMPARE(viewer.window.grab().toImage(), start);
}

void tst_TextView::lettersThatAreCutFadeAway()
{
    const ScratchFolder folder;
    folder.write("long.txt", QByteArray("H").repeated(200) + '\n');
    folder.write("right.txt", QByteArray("\u05e9").repeated(200) + '\n');
    for (const bool fromTheRight : {false, true}) {
        const Viewer viewer(folder.path(fromTheRight ? "right.txt" : "long.txt"));
        const int width = viewer.window.pane()->width();
        // Of the letters in three columns, whether there is no more than a trace.
        const auto isCutAt = [&viewer](int first) {
            const auto* pane = viewer.window.pane();
            const QImage shown = viewer.window.pane()->grab().toImage();
            int darkest = 255;
            for (int y = 2; y < 2 + pane->fontMetrics().height(); ++y) {
                for (int x = first; x < first + 3; ++x)
                    darkest = std::min(darkest, qGray(shown.pixel(x, y)));
            }
            return darkest > 120;
        };
        const int left = 3;
        const int right = width - ZSkinService::ScrollBarWidth - left - 3;
        pressKey('0');
        QCOMPARE(isCutAt(right), !fromTheRight);
        QCOMPARE(isCutAt(left), fromTheRight);
        pressKey(fromTheRight ? PhoneKey::Left : PhoneKey::Right);
        QVERIFY(isCutAt(right));
        QVERIFY(isCutAt(left));
    }
}

void tst_TextView::linesThatAreWrittenFromTheRightBeginThere()
{
    const ScratchFolder folder;
    folder.write("a.txt", "\u05e9\u05dc\u05d5\u05dd\nabc\n\u05e9\u05dc\t\u05d5\u05dd\n");
    const Viewer viewer(folder.path("a.txt"));
    const auto rowInk = [&viewer](int row) { return inkOfRow(viewer, row); };
    const int width = viewer.window.pane()->width();
    QVERIFY(rowInk(0).left() > width / 2);
    QVERIFY(rowInk(0).right() > width - 16);
    QVERIFY(rowInk(1).right() < width / 2);
    QVERIFY(rowInk(1).left() < 8);
    // Behind a tab it goes on to the left.
    QCOMPARE(rowInk(2).right(), rowInk(0).right());
    QVERIFY(rowInk(2).left() < rowInk(0).left());
}

void tst_TextView::longLinesFromTheRightAreMovedTheOtherWay()
{
    const ScratchFolder folder;
    folder.write("a.txt", QByteArray("\u05e9").repeated(100) + QByteArray(" ").repeated(100) +
                              QByteArray("\u05e9").repeated(100));
    const Viewer viewer(folder.path("a.txt"));
    pressKey('0');
    const QImage start = viewer.window.pane()->grab().toImage();
    pressKey(PhoneKey::Right);
    QCOMPARE(viewer.window.pane()->grab().toImage(), start);
    pressKey(PhoneKey::Left);
    QVERIFY(viewer.window.pane()->grab().toImage() != start);
    for (int i = 0; i < ManyRows; ++i)
        pressKey(PhoneKey::Left);
    // The end of the line, which is at its left, comes into view and not beyond.
    QVERIFY(inkOfRow(viewer, 0).left() < 8);
    pressKey('1');
    QCOMPARE(viewer.window.pane()->grab().toImage(), start);
}

void tst_TextView::unusableFilesGiveAMessage_data()
{
    addUnusableKinds();
}

void tst_TextView::unusableFilesGiveAMessage()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    makeUnusable(folder, "a.txt", kind);
    const PeakMemory memory;
    Viewer viewer(folder.path("a.txt"));
    const bool hasContent = kind == "binary" || kind.endsWith("without end");
    QCOMPARE(!viewer.window.pane()->rows().isEmpty(), hasContent);
    const QImage shown =
        viewer.window.pane()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QVERIFY(!isPlain(shown, shown.rect(), shown.pixelColor(1, 1)));
    for (const int key : {int(PhoneKey::Down), int(PhoneKey::PageDown), int(EndCode), int('0'),
                          int(PhoneKey::Right), int(PhoneKey::Up), int(HomeCode)})
        pressKey(key);
    QCOMPARE(!viewer.window.pane()->rows().isEmpty(), hasContent);
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
}

void tst_TextView::fileThatShrinksIsShownFromItsEnd()
{
    const ScratchFolder folder;
    folder.write("a.txt", numbered(1000));
    const Viewer viewer(folder.path("a.txt"));
    pressKey(EndCode);
    folder.write("a.txt", "short\n");
    pressKey(PhoneKey::Down);
    QCOMPARE(viewer.first(), QString("short"));
    QCOMPARE(viewer.rows(), 1);
    folder.write("a.txt", "");
    pressKey(PhoneKey::Up);
    QCOMPARE(viewer.rows(), 0);
    folder.write("a.txt", "again\n");
    pressKey(PhoneKey::Up);
    QCOMPARE(viewer.first(), QString("again"));
}

void tst_TextView::fileThatGrowsIsReadOn()
{
    const ScratchFolder folder;
    folder.write("a.txt", numbered(100));
    const Viewer viewer(folder.path("a.txt"));
    pressKey(EndCode);
    QCOMPARE(viewer.last(), QString("99"));
    folder.write("a.txt", numbered(101));
    pressKey(PhoneKey::Down);
    QCOMPARE(viewer.last(), QString("100"));
}

void tst_TextView::hugeFileTakesNeitherTimeNorMemory()
{
    constexpr qint64 Bytes = 4LL * 1024 * 1024 * 1024;
    const ScratchFolder folder;
    folder.writeSparse("a.txt", Bytes);
    const PeakMemory memory;
    const std::clock_t before = std::clock();
    const Viewer viewer(folder.path("a.txt"));
    pressKey(EndCode);
    for (int i = 0; i < 10; ++i)
        pressKey(PhoneKey::PageUp);
    pressKey('0');
    pressKey(HomeCode);
    QVERIFY(viewer.rows() > 10);
    const double seconds = double(std::clock() - before) / CLOCKS_PER_SEC;
    QVERIFY2(seconds < 5, qPrintable(QString::number(seconds)));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
}

void tst_TextView::fullScreenShowsMoreRows()
{
    const ScratchFolder folder;
    folder.write("a.txt", numbered(1000));
    const Viewer viewer(folder.path("a.txt"));
    const int before = viewer.rows();
    pressKey('*');
    QTRY_VERIFY(viewer.rows() > before);
    QCOMPARE(viewer.first(), QString("0"));
    pressKey('*');
    QTRY_COMPARE(viewer.rows(), before);
}

void tst_TextView::wheelAndTapsScroll()
{
    const ScratchFolder folder;
    folder.write("a.txt", numbered(1000));
    const Viewer viewer(folder.path("a.txt"));
    auto* pane = viewer.window.pane();
    const auto turn = [pane](int angle) {
        QWheelEvent event(QPointF(100, 100), pane->mapToGlobal(QPointF(100, 100)), {}, {0, angle},
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(pane, &event);
    };
    turn(-120);
    QCOMPARE(viewer.first(), QString("3"));
    turn(-20);
    turn(-20);
    QCOMPARE(viewer.first(), QString("4"));
    turn(240);
    QCOMPARE(viewer.first(), QString("0"));
    const QString last = viewer.last();
    QTest::mouseClick(pane, Qt::LeftButton, {}, QPoint(100, pane->height() - 10));
    QCOMPARE(viewer.first(), last);
    QTest::mouseClick(pane, Qt::LeftButton, {}, QPoint(100, 10));
    QCOMPARE(viewer.first(), QString("0"));
}

QUARN_TEST_MAIN(tst_TextView)
#include "tst_textview.moc"
