#include "platform/keymap.h"
#include "platform/znavtabwidget.h"
#include "platform/zskinservice.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/support/debuglines.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"

#include <QFile>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <memory>

namespace
{

const QColor Orange(255, 100, 12);
constexpr QRect Rows[] = {{0, 115, 240, 20}, {0, 140, 240, 20}, {0, 205, 240, 20}};

QFont titleFont()
{
    return ZSkinService::font(QStringLiteral("ZarnikFont"), 27, 87);
}

QFont textFont()
{
    return ZSkinService::font(QStringLiteral("ZarnikFont"), 15, 10);
}

/// The ink of a text whose baseline begins at a point.
QRect inkOf(const QString& text, const QFont& font, const QColor& colour, QPoint baseline)
{
    QPixmap sheet(240, 320);
    sheet.fill(Qt::black);
    QPainter painter(&sheet);
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(baseline, text);
    painter.end();
    return inkBounds(sheet.toImage(), {0, 0, 240, 320}, Qt::black);
}

/// Where the two lines beside the logo are, each with its whole height.
QRect lineAt(const QFont& font, int baseline)
{
    const QFontMetrics metrics(font);
    return {70, baseline - metrics.ascent(), 170, metrics.height()};
}

} // namespace

class tst_FmAbout : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        program_ = std::make_unique<Program>();
        logo_ = programFolder() + QStringLiteral("fm.png");
        QFile::remove(logo_);
    }

    void cleanup()
    {
        program_.reset();
        QFile::remove(logo_);
    }

    void pictureIsBlackWithoutALogoAndNothingIsReported()
    {
        const DebugLines lines;
        const QImage picture = aboutPicture();
        QVERIFY(isPlain(picture, {0, 0, 70, 115}, Qt::black));
        QVERIFY(!lines.mentions("fm.png"));
    }

    void nothingIsDrawnBesideTheTextsAndTheLogo()
    {
        writeLogo(plainPng(20, 30, Qt::magenta));
        QImage picture = aboutPicture();
        QPainter painter(&picture);
        for (const QRect& row : Rows)
            painter.fillRect(row, Qt::black);
        painter.fillRect(QRect(7, 15, 20, 30), Qt::black);
        painter.fillRect(lineAt(titleFont(), 40), Qt::black);
        painter.fillRect(lineAt(textFont(), 60), Qt::black);
        painter.end();
        QVERIFY(isPlain(picture, picture.rect(), Qt::black));
    }

    void logoIsInItsPlaceAndOfItsOwnSize_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("small") << QSize(20, 30);
        QTest::newRow("tall") << QSize(50, 90);
        QTest::newRow("one pixel") << QSize(1, 1);
    }

    void logoIsInItsPlaceAndOfItsOwnSize()
    {
        QFETCH(QSize, size);
        writeLogo(plainPng(size.width(), size.height(), Qt::magenta));
        QCOMPARE(boundsOf(aboutPicture(), Qt::magenta), QRect(QPoint(7, 15), size));
    }

    void logoIsThatOfTheProgramsFolder()
    {
        writeLogo(plainPng(20, 30, Qt::magenta));
        program_->workFolder().write("fm.png", plainPng(20, 30, Qt::cyan));
        const QImage picture = aboutPicture();
        QVERIFY(work_folder != program_->window()->programDir);
        QVERIFY(!boundsOf(picture, Qt::magenta).isEmpty());
        QVERIFY(boundsOf(picture, Qt::cyan).isEmpty());
    }

    void logoThatIsNoPictureIsLeftOut()
    {
        writeLogo("no picture");
        QVERIFY(isPlain(aboutPicture(), {0, 0, 70, 115}, Qt::black));
    }

    void titleIsOrange()
    {
        const QImage picture = aboutPicture();
        const QRect ink =
            inkBounds(picture, lineAt(titleFont(), 40).adjusted(0, 0, 0, -8), Qt::black);
        const QRect expected = inkOf("Quarn 1.6", titleFont(), Orange, {70, 40});
        QCOMPARE(ink.left(), expected.left());
        QCOMPARE(ink.top(), expected.top());
        const QRect orange = boundsOf(picture, Orange);
        QVERIFY(!orange.isEmpty());
        QVERIFY(expected.contains(orange));
        QVERIFY(std::abs(orange.bottom() - expected.bottom()) <= 1);
    }

    void descriptionIsWhiteBelowTheTitle()
    {
        const QImage picture = aboutPicture();
        const QRect expected = inkOf("FileManager for ROKR E2", textFont(), Qt::white, {70, 60});
        const QRect area(0, expected.top(), 240, 100 - expected.top());
        QVERIFY(isNear(whiteInk(picture, area), expected));
    }

    void authorAndContactsAreWhiteAndCentredInTheirRows()
    {
        const QImage picture = aboutPicture();
        for (const QRect& row : Rows) {
            const QRect ink = whiteInk(picture, row);
            QVERIFY(!ink.isEmpty());
            QVERIFY(std::abs(ink.center().x() - 120) <= 2);
            QVERIFY(ink.height() <= QFontMetrics(textFont()).height());
            QVERIFY(std::abs(ink.center().y() - row.center().y()) <= 4);
        }
    }

    void pictureFillsThePageFromItsTopLeftCorner()
    {
        writeLogo(plainPng(233, 320, Qt::magenta));
        const QImage picture = aboutPicture();
        QCOMPARE(picture.width(), 240);
        QCOMPARE(boundsOf(picture, Qt::magenta).topLeft(), QPoint(7, 15));
        QCOMPARE(boundsOf(picture, Qt::magenta).bottomRight(), QPoint(239, picture.height() - 1));
    }

    void pictureIsDrawnOnceAndDoesNotFollowTheLogo()
    {
        writeLogo(plainPng(20, 30, Qt::magenta));
        const QImage before = aboutPicture();
        writeLogo(plainPng(20, 30, Qt::cyan));
        pressKey(PhoneKey::Right);
        pressKey(PhoneKey::Left);
        QCOMPARE(grabPage(), before);
    }

    void logoIsThatOfTheStartThoughItIsSeenLater()
    {
        writeLogo(plainPng(20, 30, Qt::magenta));
        program_->start();
        writeLogo(plainPng(20, 30, Qt::cyan));
        pressKey(PhoneKey::Left);
        QCOMPARE(boundsOf(grabPage(), Qt::magenta), QRect(7, 15, 20, 30));
    }

    void pageStaysFullWidthInFullScreen()
    {
        const QImage before = aboutPicture();
        pressKey('*');
        QTRY_VERIFY(grabPage().height() > before.height());
        QCOMPARE(grabPage().copy(before.rect()), before);
    }

private:
    static QString programFolder()
    {
        const QString program = QString::fromLocal8Bit(ZApplication::programName());
        return program.left(program.lastIndexOf(QLatin1Char('/')) + 1);
    }

    void writeLogo(const QByteArray& bytes) const
    {
        QFile file(logo_);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    /// Starts the program, goes to the third page and takes its picture.
    QImage aboutPicture()
    {
        program_->start();
        pressKey(PhoneKey::Left);
        [this] { QCOMPARE(program_->window()->activePage(), int(FM::AboutPage)); }();
        return grabPage();
    }

    QImage grabPage() const
    {
        return program_->window()->tabWidget()->currentPage()->grab().toImage().convertToFormat(
            QImage::Format_RGB32);
    }

    /// The ink of an area, which must be grey or white.
    static QRect whiteInk(const QImage& picture, const QRect& area)
    {
        QImage grey = picture;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                const QColor pixel = picture.pixelColor(x, y);
                // The title's descenders may reach in.
                if (pixel.red() - pixel.blue() > 32)
                    grey.setPixelColor(x, y, Qt::black);
            }
        }
        return inkBounds(grey, area, Qt::black);
    }

    std::unique_ptr<Program> program_;
    QString logo_;
};

/// The program's folder is that of argv[0]: here one of the test's own.
int main(int argc, char** argv)
{
    giveUpRootPowers(argv);
    const QTemporaryDir folder;
    QByteArray program = QFile::encodeName(folder.filePath(QStringLiteral("quarn")));
    argv[0] = program.data();
    return runTest<tst_FmAbout>(argc, argv);
}

#include "tst_fmabout.moc"
