#include "platform/keymap.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QPainter>

#include <memory>

namespace
{

/// The ink of a text as the toolkit draws it into a place of a box.
QRect inkOf(const QString& text, const QFont& font, const QRect& place, int align)
{
    QPixmap sheet(ZScreen::Width, 1000);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.setFont(font);
    painter.drawText(place, align, text);
    painter.end();
    return inkBounds(sheet.toImage(), place, Qt::white);
}

/// Where line `number` of a text that begins at `top` is drawn.
QRect lineRect(const QFont& font, int top, int number = 0)
{
    return {5, top + 4 + number * pitchOf(font), 210, QFontMetrics(font).height()};
}

/// The ink in a line of the white text block, which has an outline left and right.
QRect textInk(const QImage& picture, const QRect& line)
{
    return inkBounds(picture, line.adjusted(-4, 0, 4, 0), Qt::white);
}

} // namespace

class tst_kWidgetDrawing : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { stageBoxes(folder_); }
    void init() { box_ = std::make_unique<kWidget>(); }
    void cleanup() { box_.reset(); }

    void boxIsAsHighAsItsBlocksAndInTheMiddle_data()
    {
        const int message = blockHeight(titleFont()) + blockHeight(textFont());
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<int>("height");
        QTest::newRow("title and text") << "Title"
                                        << "text"
                                        << "" << message;
        QTest::newRow("with icon") << "Title"
                                   << "text"
                                   << "icon.png" << message + 26;
        QTest::newRow("icon is missing") << "Title"
                                         << "text"
                                         << "res/img/none.png" << message;
        QTest::newRow("two lines in both")
            << "Title\nmore"
            << "text\nmore"
            << "" << blockHeight(titleFont(), 2) + blockHeight(textFont(), 2);
        QTest::newRow("nothing at all") << ""
                                        << ""
                                        << "" << 8;
        QTest::newRow("empty paragraphs") << "Title"
                                          << "a\n\nb\n"
                                          << "" << message + pitchOf(textFont());
        QTest::newRow("a rule") << "Title"
                                << "a<hr>b"
                                << "" << message + pitchOf(textFont()) + 4;
        QTest::newRow("rules alone") << "Title"
                                     << "<hr><hr>"
                                     << "" << blockHeight(titleFont()) + 12;
        QTest::newRow("a rule in a title is text") << "<hr>"
                                                   << "text"
                                                   << "" << message;
        QTest::newRow("rules are told by case") << "Title"
                                                << "a<HR>b"
                                                << "" << message;
    }

    void boxIsAsHighAsItsBlocksAndInTheMiddle()
    {
        QFETCH(QString, title);
        QFETCH(QString, text);
        QFETCH(QString, icon);
        QFETCH(int, height);
        box_->showText(title, text, 4, icon, kWidget::Message);
        awaitKeys(*box_);
        QTRY_COMPARE(box_->geometry(), QRect(10, (320 - height) / 2, 220, height));
    }

    void titleIsWhiteOnBlackAndCentred()
    {
        box_->showText("Title\nof two lines", "text", 4, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        const int height = blockHeight(titleFont(), 2);
        QVERIFY(isPlain(picture, {0, 0, 220, 4}, Qt::black));
        QVERIFY(isPlain(picture, {0, 0, 5, height}, Qt::black));
        QVERIFY(isPlain(picture, {215, 0, 5, height}, Qt::black));
        const QStringList lines{"Title", "of two lines"};
        for (int i = 0; i < 2; ++i) {
            const QRect line = lineRect(titleFont(), 0, i);
            const QRect ink = inkBounds(picture, line, Qt::black);
            QVERIFY(isNear(ink, inkOf(lines.at(i), titleFont(), line, Qt::AlignHCenter)));
            QVERIFY(boundsOf(picture, Qt::white).top() < height);
        }
    }

    void iconIsCentredAboveTheTitle()
    {
        box_->showText("Title", "text", 4, "icon.png", kWidget::Message);
        const QImage picture = pictureOf(*box_);
        QCOMPARE(boundsOf(picture, Qt::green), QRect(90, 4, 40, 26));
        const QRect line = lineRect(titleFont(), 26);
        QVERIFY(isNear(inkBounds(picture, line, Qt::black),
                       inkOf("Title", titleFont(), line, Qt::AlignHCenter)));
        // The text begins right below.
        const int top = blockHeight(titleFont()) + 26;
        QVERIFY(isPlain(picture, {1, top + 1, 218, 3}, Qt::white));
    }

    void textIsBlackOnWhiteWithABlackOutline()
    {
        box_->showText("Title", "some text", 4, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        const int top = blockHeight(titleFont());
        const int height = blockHeight(textFont());
        QVERIFY(isPlain(picture, {0, top, 220, 1}, Qt::black));
        QVERIFY(isPlain(picture, {0, top, 1, height}, Qt::black));
        QVERIFY(isPlain(picture, {219, top, 1, height}, Qt::black));
        QVERIFY(isPlain(picture, {0, top + height - 1, 220, 1}, Qt::black));
        QVERIFY(isPlain(picture, {1, top + 1, 4, height - 2}, Qt::white));
        QVERIFY(isPlain(picture, {215, top + 1, 4, height - 2}, Qt::white));
        QVERIFY(isPlain(picture, {1, top + 1, 218, 3}, Qt::white));
    }

    void textIsAlignedAsAsked_data()
    {
        QTest::addColumn<int>("align");
        QTest::newRow("left") << 1;
        QTest::newRow("right") << 2;
        QTest::newRow("centred") << 4;
        QTest::newRow("none given") << 0;
    }

    void textIsAlignedAsAsked()
    {
        QFETCH(int, align);
        box_->showText("Title", "first\nsecond one", align, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        const QStringList lines{"first", "second one"};
        for (int i = 0; i < 2; ++i) {
            const QRect line = lineRect(textFont(), blockHeight(titleFont()), i);
            QVERIFY(isNear(textInk(picture, line), inkOf(lines.at(i), textFont(), line, align)));
        }
    }

    void textsAreDrawnLiterally_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("percent signs") << "9% %1 %n %%";
        QTest::newRow("a file called like an argument") << "%2";
        QTest::newRow("markup") << "<b>b</b>&amp;";
        QTest::newRow("almost a rule") << "<hr/> < hr>";
        QTest::newRow("ampersand") << "a && b & c";
        QTest::newRow("backslashes") << "a\\nb \\t \\0";
        QTest::newRow("quotes") << "\"it's\" `x` $HOME";
    }

    void textsAreDrawnLiterally()
    {
        QFETCH(QString, text);
        box_->showText(text, text, 1, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        const QRect titleLine = lineRect(titleFont(), 0);
        QVERIFY(isNear(inkBounds(picture, titleLine, Qt::black),
                       inkOf(text, titleFont(), titleLine, 4)));
        const QRect line = lineRect(textFont(), blockHeight(titleFont()));
        QVERIFY(isNear(textInk(picture, line), inkOf(text, textFont(), line, 1)));
        QCOMPARE(picture.height(), blockHeight(titleFont()) + blockHeight(textFont()));
    }

    void bytesThatAreNoTextAreOneMarkEach_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("a byte") << QString(QChar(0xdc80));
        QTest::newRow("bytes inside") << 'a' + QString(QChar(0xdcff)) + QChar(0xdcc3) + 'b';
        QTest::newRow("half of a character") << 'a' + QString(QChar(0xd83d)) + 'b';
        QTest::newRow("a byte-order mark") << QString(QChar(0xfeff)) + 'a';
        QTest::newRow("a turn of the direction") << 'a' + QString(QChar(0x202e)) + 'b';
        QTest::newRow("a byte-order mark inside") << 'a' + QString(QChar(0xfeff)) + 'b';
    }

    void bytesThatAreNoTextAreOneMarkEach()
    {
        QFETCH(QString, text);
        QString marked = text;
        for (QChar& character : marked)
            if (character.unicode() > 'z')
                character = QChar(QChar::ReplacementCharacter);
        box_->showText(text, text, 1, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        kWidget expected;
        expected.showText(marked, marked, 1, QString(), kWidget::Message);
        QVERIFY(picture == pictureOf(expected));
        // A mark takes room: it is not as if nothing were there.
        kWidget without;
        without.showText(QStringLiteral("ab"), QStringLiteral("ab"), 1, QString(),
                         kWidget::Message);
        QVERIFY(picture != pictureOf(without));
    }

    void ruleSeparatesTheTextsAroundIt()
    {
        box_->showText("Title", "above<hr>below", 4, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        const int top = blockHeight(titleFont());
        const int rule = top + 4 + pitchOf(textFont());
        QVERIFY(isPlain(picture, {5, rule, 206, 1}, Qt::black));
        QVERIFY(isPlain(picture, {1, rule, 4, 1}, Qt::white));
        QVERIFY(isPlain(picture, {211, rule, 8, 1}, Qt::white));
        const QRect above = lineRect(textFont(), top);
        const QRect below = lineRect(textFont(), rule);
        QVERIFY(isNear(textInk(picture, above), inkOf("above", textFont(), above, 4)));
        QVERIFY(isNear(textInk(picture, below), inkOf("below", textFont(), below, 4)));
        // The ground is reserved for three lines, which is more than there is to see.
        QCOMPARE(picture.height(), rule + 4 + pitchOf(textFont()));
        QVERIFY(isPlain(picture, {1, top + 1, 4, picture.height() - top - 2}, Qt::white));
    }

    void consecutiveRulesAreFourPixelsApart()
    {
        box_->showText("Title", "a<hr><hr>b<hr>", 1, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        const int first = blockHeight(titleFont()) + 4 + pitchOf(textFont());
        const int last = first + 8 + pitchOf(textFont());
        for (const int rule : {first, first + 4, last}) {
            QVERIFY(isPlain(picture, {5, rule, 206, 1}, Qt::black));
            QVERIFY(isPlain(picture, {5, rule + 1, 206, 2}, Qt::white));
        }
        QCOMPARE(picture.height(), last + 4);
    }

    void messageHasNoKeyBarAndAQuestionHasYesAndNo()
    {
        box_->showText("Question", "Sure?", 4, QString(), kWidget::Message);
        const int messageHeight = pictureOf(*box_).height();
        box_->init();
        QImage picture;
        askAnd(*box_, [this, &picture] {
            picture = pictureOf(*box_);
            pressKey(PhoneKey::SoftRight);
        });
        QCOMPARE(picture.height(), messageHeight + 15);
        const QRect yes(0, messageHeight, 110, 15);
        const QRect no(110, messageHeight, 110, 15);
        QVERIFY(isNear(inkBounds(picture, yes, Qt::black),
                       inkOf(LANG_YES, textFont(), yes, Qt::AlignCenter)));
        QVERIFY(isNear(inkBounds(picture, no, Qt::black),
                       inkOf(LANG_NO, textFont(), no, Qt::AlignCenter)));
        QVERIFY(isPlain(picture, {0, messageHeight, 20, 15}, Qt::black));
        QVERIFY(isPlain(picture, {200, messageHeight, 20, 15}, Qt::black));
    }

    void progressHasAKeyBarOnlyIfItCanBeCancelled()
    {
        box_->showProcess("Wait", QString(), 0, QString(), 0, QString(), kWidget::Plain);
        const int plainHeight = pictureOf(*box_).height();
        QCOMPARE(plainHeight, blockHeight(titleFont()) + FrameHeight + 4);
        box_->init();
        box_->showProcess("Wait", QString(), 0, QString(), 0, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        QCOMPARE(picture.height(), plainHeight + 15);
        const QRect bar(0, plainHeight, 220, 15);
        QVERIFY(isNear(inkBounds(picture, bar, Qt::black),
                       inkOf(LANG_CANCEL, textFont(), bar, Qt::AlignCenter)));
        QVERIFY(isPlain(picture, {0, plainHeight, 20, 15}, Qt::black));
    }

    void progressHasTheAnimationBetweenItsTexts()
    {
        const TicksHeldBack held(*box_);
        box_->showProcess("Wait", "above", 1, "below", 4, "icon.png", kWidget::Plain);
        const QImage picture = pictureOf(*box_);
        const int aboveTop = blockHeight(titleFont()) + 26;
        const int frameTop = aboveTop + blockHeight(textFont());
        const int belowTop = frameTop + FrameHeight + 4;
        const QRect above = lineRect(textFont(), aboveTop);
        const QRect below = lineRect(textFont(), belowTop);
        QVERIFY(isNear(textInk(picture, above), inkOf("above", textFont(), above, 1)));
        QVERIFY(isNear(textInk(picture, below), inkOf("below", textFont(), below, 4)));
        QCOMPARE(boundsOf(picture, frameColour(0)), QRect(95, frameTop, FrameWidth, FrameHeight));
        QVERIFY(isPlain(picture, {0, frameTop - 1, 220, 1}, Qt::black));
        QVERIFY(isPlain(picture, {1, frameTop, 94, FrameHeight + 4}, Qt::white));
        QVERIFY(isPlain(picture, {0, frameTop, 1, FrameHeight + 4}, Qt::black));
        QVERIFY(isPlain(picture, {219, frameTop, 1, FrameHeight + 4}, Qt::black));
        QCOMPARE(picture.height(), belowTop + blockHeight(textFont()));
    }

    void framesGoRoundFromTheFirst()
    {
        const TicksHeldBack held(*box_);
        box_->showProcess("Wait", QString(), 0, QString(), 0, QString(), kWidget::Plain);
        const QRect place(95, blockHeight(titleFont()), FrameWidth, FrameHeight);
        QVERIFY(isPlain(pictureOf(*box_), place, frameColour(0)));
        for (int tick = 1; tick <= 20; ++tick) {
            box_->aniUpdate();
            const QImage picture = pictureOf(*box_);
            QCOMPARE(boundsOf(picture, frameColour(tick % 8)), place);
        }
    }

    void animationRunsByItself()
    {
        box_->showProcess("Wait", QString(), 0, QString(), 0, QString(), kWidget::Plain);
        QTRY_VERIFY(!boundsOf(pictureOf(*box_), frameColour(2)).isEmpty());
        QTRY_VERIFY(!boundsOf(pictureOf(*box_), frameColour(4)).isEmpty());
    }

    void animationDoesNotRunInAMessage()
    {
        box_->showProcess("Wait", QString(), 0, QString(), 0, QString(), kWidget::Plain);
        box_->init();
        box_->showText("Title", "text", 4, QString(), kWidget::Message);
        QCOMPARE(animationTimer(*box_), nullptr);
        const QImage picture = pictureOf(*box_);
        for (int frame = 0; frame < 8; ++frame)
            QVERIFY(boundsOf(picture, frameColour(frame)).isEmpty());
    }

    void missingFramesTakeNoRoom()
    {
        const ScratchFolder empty;
        work_folder = empty.path() + QLatin1Char('/');
        box_->showProcess("Wait", QString(), 0, "below", 4, "icon.png", kWidget::Plain);
        const QImage picture = pictureOf(*box_);
        box_->aniUpdate();
        box_->stop(1);
        box_->aniUpdate();
        work_folder = folder_.path() + QLatin1Char('/');
        QCOMPARE(picture.height(), blockHeight(titleFont()) + 4 + blockHeight(textFont()));
        QVERIFY(!box_->isUp());
    }

    void linesEndAtMostOneCharacterBehindTheUsableWidth()
    {
        const QFontMetrics metrics(textFont());
        const int usable = 210 - metrics.maxWidth();
        const int inLine = usable / metrics.horizontalAdvance('w') + 1;
        box_->showText("Title", QString(3 * inLine + 1, QLatin1Char('w')), 1, QString(),
                       kWidget::Message);
        const QImage picture = pictureOf(*box_);
        QCOMPARE(picture.height(), blockHeight(titleFont()) + blockHeight(textFont(), 4));
        const QRect line = lineRect(textFont(), blockHeight(titleFont()));
        QVERIFY(isNear(textInk(picture, line),
                       inkOf(QString(inLine, QLatin1Char('w')), textFont(), line, 1)));
    }

    void longTextsAreWrappedAndDrawnWhole_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("words") << QStringLiteral("several words ").repeated(40);
        QTest::newRow("one word") << QString(400, QLatin1Char('w'));
        QTest::newRow("higher than the screen") << QStringLiteral("line\n").repeated(60);
    }

    void longTextsAreWrappedAndDrawnWhole()
    {
        QFETCH(QString, text);
        box_->showText("Title", text, 1, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        const int top = blockHeight(titleFont());
        const int lines = (picture.height() - top - 4) / pitchOf(textFont());
        QCOMPARE(picture.height(), top + blockHeight(textFont(), lines));
        // Of one that is higher than the screen the top is shown.
        QCOMPARE(box_->geometry().top(), std::max((320 - picture.height()) / 2, 0));
        for (int i = 0; i < lines; ++i) {
            const QRect ink = textInk(picture, lineRect(textFont(), top, i));
            QVERIFY2(!ink.isEmpty(), qPrintable(QString::number(i)));
            // A line may be wider than planned by one character, which still is inside the column.
            QVERIFY(ink.right() <= 215);
        }
    }

    void longTitleIsWrapped()
    {
        box_->showText(QStringLiteral("/folder/with/a/name").repeated(5), "text", 1, QString(),
                       kWidget::Message);
        const QImage picture = pictureOf(*box_);
        const int titleHeight = picture.height() - blockHeight(textFont());
        QCOMPARE((titleHeight - 4) % pitchOf(titleFont()), 0);
        QVERIFY(titleHeight > blockHeight(titleFont(), 2));
        QVERIFY(inkBounds(picture, {215, 0, 5, titleHeight}, Qt::black).isEmpty());
    }

private:
    ScratchFolder folder_;
    std::unique_ptr<kWidget> box_;
};

QUARN_TEST_MAIN(tst_kWidgetDrawing)
#include "tst_kwidgetdrawing.moc"
