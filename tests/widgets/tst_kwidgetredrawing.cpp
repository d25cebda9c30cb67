#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QPaintEvent>
#include <QRandomGenerator>

#include <memory>
#include <utility>

namespace
{

/// What of a box is painted from now on.
class PaintedArea : public QObject
{
public:
    explicit PaintedArea(kWidget& box) { box.installEventFilter(this); }

    const QRegion& area() const { return area_; }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            area_ += static_cast<QPaintEvent*>(event)->region();
        return false;
    }

private:
    QRegion area_;
};

} // namespace

/// A box in the place of another, of which as little is painted as differs.
class tst_kWidgetRedrawing : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { stageBoxes(folder_); }
    void init() { box_ = std::make_unique<kWidget>(); }
    void cleanup() { box_.reset(); }

    void secondBoxShowsNothingOfTheFirst()
    {
        box_->showText("Title", QStringLiteral("wide text ").repeated(30), 1, "icon.png",
                       kWidget::Message);
        QVERIFY(!boundsOf(pictureOf(*box_), Qt::green).isEmpty());
        box_->init();
        box_->showText("Title", "x", 1, QString(), kWidget::Message);
        const QImage picture = pictureOf(*box_);
        QVERIFY(boundsOf(picture, Qt::green).isEmpty());
        kWidget fresh;
        fresh.showText("Title", "x", 1, QString(), kWidget::Message);
        QCOMPARE(picture, pictureOf(fresh));
    }

    void boxShownOnceMoreWithoutBeingClearedShowsNothingOfTheFirst()
    {
        box_->showText("Title\nwide", QStringLiteral("wide text ").repeated(30), 1, "icon.png",
                       kWidget::Message);
        QVERIFY(!boundsOf(pictureOf(*box_), Qt::green).isEmpty());
        box_->showText("T", "x", 1, QString(), kWidget::Message);
        QTRY_COMPARE(box_->height(), blockHeight(titleFont()) + blockHeight(textFont()));
        const QImage picture = pictureOf(*box_);
        kWidget fresh;
        fresh.showText("T", "x", 1, QString(), kWidget::Message);
        QCOMPARE(picture, pictureOf(fresh));
    }

    void changedTextLooksLikeANewOne_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        const QString head = "/folder/of/the/file\nto\n/another/folder<hr>";
        QTest::newRow("numbers") << head + "Completed: 9% (9 Kb/1 Mb)"
                                 << head + "Completed: 100% (1 Mb/1 Mb)";
        QTest::newRow("the same") << head + "100%" << head + "100%";
        QTest::newRow("line above the rule") << "file 1\nto\nfile 1<hr>0%"
                                             << "file 22\nto\nfile 22<hr>0%";
        QTest::newRow("first line") << "wide text\nb<hr>c"
                                    << "x\nb<hr>c";
        QTest::newRow("more lines") << "a<hr>b"
                                    << "a\nb<hr>c";
        QTest::newRow("fewer lines") << "a\nb<hr>c"
                                     << "a<hr>c";
        QTest::newRow("line goes to the other side of a rule") << "a\nb<hr>c"
                                                               << "a<hr>b\nc";
        QTest::newRow("more rules") << "a<hr>b"
                                    << "a<hr>b<hr>c";
        QTest::newRow("no rule") << "a<hr>b"
                                 << "a\nb";
        QTest::newRow("nothing behind the rule") << "a<hr>"
                                                 << "b<hr>";
        QTest::newRow("nothing") << ""
                                 << "";
        QTest::newRow("high and deep letters")
            << QString::fromUtf8("\u00c5\u1ea4\u01fag\u00e7\u1e69<hr>\u1e68j\u0327")
            << QString::fromUtf8("a\u1ea4<hr>x");
        QTest::newRow("marks") << QString::fromUtf8("x\nA\u0301\u0301\u0301\u0323\u0323\nx")
                               << "x\nA\nx";
        QTest::newRow("marks come")
            << "x\nA\nx" << QString::fromUtf8("x\nA\u0301\u0301\u0301\u0323\u0323\nx");
        QTest::newRow("other scripts")
            << QString::fromUtf8("\u0e17\u0e35\u0e48 \u65e5\u672c\n\u0645\u062d\u0645\u062f<hr>1")
            << QString::fromUtf8("\u0e17\u0e35\n\u65e5<hr>1");
    }

    void changedTextLooksLikeANewOne()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        for (const int align : {1, 4}) {
            for (const auto& [from, to] : {std::pair(before, after), std::pair(after, before)}) {
                box_->showText("Title", from, align, "icon.png", kWidget::Plain);
                box_->paintNow();
                box_->showText("Title", to, align, "icon.png", kWidget::Plain);
                box_->paintNow();
                kWidget fresh;
                fresh.showText("Title", to, align, "icon.png", kWidget::Plain);
                QCOMPARE(pictureOf(*box_), pictureOf(fresh));
            }
        }
    }

    void changedLineIsPaintedAlone()
    {
        const QString head = "/folder/of/the/file<hr>to<hr>";
        box_->showText("Title", head + "Completed: 9%", 4, "icon.png", kWidget::Plain);
        box_->paintNow();
        PaintedArea painted(*box_);
        box_->showText("Title", head + "Completed: 10%", 4, "icon.png", kWidget::Plain);
        box_->paintNow();
        QVERIFY(!painted.area().isEmpty());
        QVERIFY(painted.area().boundingRect().height() < 2 * pitchOf(textFont()));
    }

    void anyChangeOfALineLooksLikeANewOne()
    {
        QRandomGenerator random(1);
        const QString letters = QString::fromUtf8(
            "AVWTojfiJlLy.,/ 0189()%mQ\u00c5\u00ec\u0457\u0416\u03a9\u05d0\u65e5\u0301");
        const auto randomText = [&](int most) {
            QString text;
            for (int i = random.bounded(most); i >= 0; --i)
                text += letters.at(random.bounded(int(letters.size())));
            return text;
        };
        for (int round = 0; round < 300; ++round) {
            const QString head = randomText(8);
            const QString tail = randomText(8);
            const int align = QList<int>{1, 2, 4}.at(round % 3);
            box_->showText("Title", head + randomText(5) + tail, align, "icon.png", kWidget::Plain);
            box_->paintNow();
            const QString after = head + randomText(5) + tail;
            box_->showText("Title", after, align, "icon.png", kWidget::Plain);
            box_->paintNow();
            kWidget fresh;
            fresh.showText("Title", after, align, "icon.png", kWidget::Plain);
            QVERIFY2(pictureOf(*box_) == pictureOf(fresh), qPrintable(after));
        }
    }

    void changedBoxLooksLikeANewOne_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<int>("align");
        QTest::addColumn<bool>("isProgress");
        QTest::newRow("title") << "Other"
                               << "icon.png" << 4 << false;
        QTest::newRow("longer title") << "Title\nof two lines"
                                      << "icon.png" << 4 << false;
        QTest::newRow("icon") << "Title"
                              << "" << 4 << false;
        QTest::newRow("alignment") << "Title"
                                   << "icon.png" << 1 << false;
        QTest::newRow("progress") << "Title"
                                  << "icon.png" << 4 << true;
    }

    void changedBoxLooksLikeANewOne()
    {
        QFETCH(QString, title);
        QFETCH(QString, icon);
        QFETCH(int, align);
        QFETCH(bool, isProgress);
        const auto show = [=](kWidget& box) {
            if (isProgress)
                box.showProcess(title, "text", align, "below", align, icon, kWidget::Message);
            else
                box.showText(title, "text<hr>1%", align, icon, kWidget::Plain);
        };
        box_->showText("Title", "text<hr>0%", 4, "icon.png", kWidget::Plain);
        box_->paintNow();
        const TicksHeldBack held(*box_);
        show(*box_);
        box_->paintNow();
        kWidget fresh;
        const TicksHeldBack heldToo(fresh);
        show(fresh);
        QCOMPARE(pictureOf(*box_), pictureOf(fresh));
        box_->showText("Title", "text<hr>0%", 4, "icon.png", kWidget::Plain);
        box_->paintNow();
        kWidget first;
        first.showText("Title", "text<hr>0%", 4, "icon.png", kWidget::Plain);
        QCOMPARE(pictureOf(*box_), pictureOf(first));
    }

    void clearedBoxIsDrawnAnew()
    {
        box_->showText("Title", "text", 4, "icon.png", kWidget::Plain);
        box_->paintNow();
        box_->init();
        box_->showText("", "x", 4, "", kWidget::Plain);
        box_->paintNow();
        kWidget fresh;
        fresh.showText("", "x", 4, "", kWidget::Plain);
        QCOMPARE(pictureOf(*box_), pictureOf(fresh));
    }

private:
    ScratchFolder folder_;
    std::unique_ptr<kWidget> box_;
};

QUARN_TEST_MAIN(tst_kWidgetRedrawing)
#include "tst_kwidgetredrawing.moc"
