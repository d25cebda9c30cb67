#include "platform/zmotion.h"
#include "platform/ztheme.h"
#include "tests/platform/findfixture.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <QVariantAnimation>

namespace
{

bool isBubbleFading(const FindList& list)
{
    const auto* fade = list.bubble()->findChild<QVariantAnimation*>();
    return fade != nullptr && fade->state() == QAbstractAnimation::Running;
}

QImage picturedWithBubble(const FindList& list)
{
    return list.box->grab().toImage();
}

} // namespace

/// The bubbles over a list in which something is found or pages are turned quickly.
class tst_ZBubble : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ZMotion::setEnabled(false); }

    void bubbleIsAPartOfTheListBesideTheRowThatIsFound_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::newRow("at the top") << "a";
        QTest::newRow("at the bottom") << "z";
        QTest::newRow("nothing") << "q";
        QTest::newRow("too long") << QString(200, 'q') + 'w';
    }

    void bubbleIsAPartOfTheListBesideTheRowThatIsFound()
    {
        QFETCH(QString, keys);
        QStringList names{"a"};
        for (int i = 0; i < 40; ++i)
            names.append("m");
        names.append("z");
        const FindList list(names);
        typeKeys(keys);
        QVERIFY(!list.bubble()->isWindow());
        QCOMPARE(list.bubble()->height(), int(ZBubble::NoteHeight));
        const QRect place = list.bubble()->geometry();
        QVERIFY(list.box->rect().contains(place));
        const int shown = list.box->currentItem() - list.box->topItem();
        QVERIFY(
            !place.intersects(QRect(0, shown * list.box->rowHeight(), 240, list.box->rowHeight())));
        QCOMPARE(keyReceiver(), list.box);
    }

    void fingersReachTheRowBelowTheBubble()
    {
        QStringList names;
        for (int i = 0; i < 40; ++i)
            names.append("m");
        const FindList list(names);
        typeKeys("m");
        const QPoint middle = list.bubble()->geometry().center();
        const int row = list.box->topItem() + middle.y() / list.box->rowHeight();
        QVERIFY(row > 0);
        tapScreen(middle);
        QCOMPARE(list.box->currentItem(), row);
    }

    void warningLooksDifferent()
    {
        const FindList list({"wine", "x"});
        typeKeys("w");
        list.box->setCurrentItem(1);
        typeKeys("w");
        const QSize plain = list.bubble()->size();
        QCOMPARE(list.said(), QString("w"));
        list.box->clear();
        typeKeys("w");
        QCOMPARE(list.said(), QString("!w"));
        QVERIFY(list.bubble()->width() > plain.width());
        const QImage picture = const_cast<ZBubble*>(list.bubble())->grab().toImage();
        QVERIFY(!boundsOf(picture, ZTheme::current().barWarning).isEmpty());
    }

    void pagesThatAreTurnedQuicklyShowTheLetter()
    {
        const FindList list({"", "beta", QString::fromUtf8("e\u0301lan"), "zulu"});
        list.box->setCurrentItem(1);
        turnPageAt(1000);
        QVERIFY(!list.isBubbleShown());
        turnPageAt(1400);
        QCOMPARE(list.said(), QString("B"));
        QVERIFY(list.bubble()->isLetter());
        QCOMPARE(list.bubble()->size(), QSize(48, 48));
        QVERIFY(list.box->rect().contains(list.bubble()->geometry()));
        list.box->setCurrentItem(2);
        QCOMPARE(list.said(), QString::fromUtf8("E\u0301"));
        QCOMPARE(list.main.keys, QList<int>({PhoneKey::PageDown, PhoneKey::PageDown}));
        // What has no name has no letter.
        list.box->setCurrentItem(0);
        QVERIFY(!list.isBubbleShown());
        QVERIFY(!list.find->isFinding());
        QTRY_VERIFY(!list.isTicking());
    }

    void letterGoesByItself()
    {
        const FindList list(someNames());
        turnPageAt(1000, Qt::Key_PageUp);
        turnPageAt(1100);
        QVERIFY(list.isBubbleShown());
        QTRY_VERIFY(!list.isBubbleShown());
        QVERIFY(!list.isTicking());
        list.box->setCurrentItem(3);
        QVERIFY(!list.isBubbleShown());
    }

    void pagesThatAreTurnedOneByOneShowNothing()
    {
        const FindList list(someNames());
        for (const quint64 time : {1000, 1401, 1802, 2203}) {
            turnPageAt(time);
            QVERIFY(!list.isBubbleShown());
        }
    }

    void heldPageKeyShowsTheLetter()
    {
        const FindList list(someNames());
        sendFindKey(QEvent::KeyPress, Qt::Key_PageDown, QString(), 1000);
        sendFindKey(QEvent::KeyPress, Qt::Key_PageDown, QString(), 1300, {}, true);
        QCOMPARE(list.said(), QString("A"));
    }

    void otherKeyTakesTheLetterAway()
    {
        const FindList list(someNames());
        turnPageAt(1000);
        turnPageAt(1100);
        pressKey(PhoneKey::Down);
        QVERIFY(!list.isBubbleShown());
        turnPageAt(1200);
        QVERIFY(list.isBubbleShown());
        typeKeys("d");
        QCOMPARE(list.said(), QString("D"));
        QVERIFY(!list.bubble()->isLetter());
    }

    void bubbleFadesWhereThereIsMotion()
    {
        const FindList list(someNames());
        typeKeys("d");
        const QImage plain = picturedWithBubble(list);
        pressKey(PhoneKey::Clear);
        const QImage without = picturedWithBubble(list);
        ZMotion::setEnabled(true);
        typeKeys("d");
        // It answers with the first picture, and is what it is without motion in the end.
        const QImage first = picturedWithBubble(list);
        QVERIFY(first != plain && first != without);
        QTRY_VERIFY(!isBubbleFading(list));
        QCOMPARE(picturedWithBubble(list), plain);
        // More letters of the same search are no other bubble.
        typeKeys("o");
        QVERIFY(!isBubbleFading(list));
        pressKey(PhoneKey::Clear);
        QVERIFY(!list.find->isFinding());
        QVERIFY(list.isBubbleShown() && list.bubble()->isLeaving());
        QTRY_VERIFY(!list.isBubbleShown());
        QVERIFY(!isBubbleFading(list) && !list.isTicking());
        QVERIFY(list.bubble()->findChild<QVariantAnimation*>()->duration() <= 80);
    }

    void bubbleThatComesBackWhileItGoesStays()
    {
        const FindList list(someNames());
        ZMotion::setEnabled(true);
        typeKeys("d");
        QTRY_VERIFY(!isBubbleFading(list));
        const QImage plain = picturedWithBubble(list);
        pressKey(PhoneKey::Clear);
        QVERIFY(isBubbleFading(list));
        typeKeys("d");
        QVERIFY(!list.bubble()->isLeaving());
        QTRY_VERIFY(!isBubbleFading(list));
        QVERIFY(list.isBubbleShown());
        QCOMPARE(picturedWithBubble(list), plain);
    }

    void nothingFadesOutOfSight()
    {
        FindList list(someNames());
        ZMotion::setEnabled(true);
        typeKeys("d");
        QVERIFY(isBubbleFading(list));
        list.main.hide();
        QVERIFY(!isBubbleFading(list));
        list.main.show();
        QVERIFY(!list.isBubbleShown());
    }

    void noteIsReadInFull()
    {
        QWidget over;
        over.resize(240, 250);
        ZBubble bubble(&over);
        for (const QString text : {"D", "Do", "Doc", "Documents", "il", "WWW"}) {
            bubble.showNote(text, false, QRect());
            const QImage picture = bubble.grab().toImage();
            // As wide as the text alone, and in the middle.
            const QRect inside = picture.rect().adjusted(3, 3, -3, -3);
            const QRect ink = inkBounds(picture, inside, picture.pixelColor(4, 4));
            QFont font = bubble.font();
            font.setPixelSize(15);
            font.setWeight(QFont::Bold);
            const int wanted = QFontMetrics(font).boundingRect(text).width();
            QVERIFY2(std::abs(ink.width() - wanted) <= 3, qPrintable(text));
            QVERIFY(std::abs(ink.left() - (picture.width() - 1 - ink.right())) <= 3);
        }
    }
};

QUARN_TEST_MAIN(tst_ZBubble)
#include "tst_zbubble.moc"
