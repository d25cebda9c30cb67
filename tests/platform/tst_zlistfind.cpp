#include "tests/platform/findfixture.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <cstdlib>
#include <set>

namespace
{

using PhoneKey::Code;

} // namespace

/// Finding rows of a list by keys.
class tst_ZListFind : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { KeyMap::instance() = KeyMap(); }

    void lettersFindAName()
    {
        const FindList list(someNames());
        typeKeys("do");
        QCOMPARE(list.current(), QString("Documents"));
        QCOMPARE(list.said(), QString("Do"));
        typeKeys("w");
        QCOMPARE(list.current(), QString("Downloads"));
        QCOMPARE(list.said(), QString("Dow"));
        QCOMPARE(list.main.keys, QList<int>());
    }

    void digitsFindANameAndTheBubbleSaysItsLetters()
    {
        const FindList list(someNames());
        typeKeys("6");
        QCOMPARE(list.current(), QString("Music"));
        typeKeys("97");
        QCOMPARE(list.current(), QString("My Pictures"));
        QCOMPARE(list.said(), QString("My P"));
        QCOMPARE(list.main.keys, QList<int>());
    }

    void sameKeyAgainFindsTheNext()
    {
        const FindList list(someNames());
        QStringList found;
        for (int i = 0; i < 4; ++i) {
            typeKeys("d");
            found.append(list.current());
            QCOMPARE(list.said().toLower(), QString("d"));
        }
        QCOMPARE(found, QStringList({"Documents", "Downloads", "dates", "Documents"}));
    }

    void nameThatIsNotThereKeepsTheRowAndWarns()
    {
        const FindList list(someNames());
        typeKeys("dox");
        QCOMPARE(list.current(), QString("Documents"));
        QCOMPARE(list.said(), QString("!dox"));
        typeKeys("5");
        QCOMPARE(list.said(), QString("!dox5"));
        QCOMPARE(list.current(), QString("Documents"));
    }

    void clearKeyEndsItAndNothingElse()
    {
        const FindList list(someNames());
        typeKeys("d");
        holdKey(Code::Clear);
        QVERIFY(!list.find->isFinding());
        QVERIFY(!list.isBubbleShown());
        QVERIFY(!list.isTicking());
        // Held on, it must not do what it does without a search.
        repeatKey(Code::Clear);
        repeatKey(Code::Clear);
        releaseKey(Code::Clear);
        QCOMPARE(list.main.keys, QList<int>());
        QCOMPARE(list.current(), QString("Documents"));
        pressKey(Code::Clear);
        QCOMPARE(list.main.keys, QList<int>{Code::Clear});
        typeKeys("m");
        QCOMPARE(list.said(), QString("M"));
    }

    void silenceEndsIt()
    {
        const FindList list(someNames());
        list.find->setSilenceTime(1);
        typeKeys("d");
        QTRY_VERIFY(!list.find->isFinding());
        QVERIFY(!list.isBubbleShown());
        QVERIFY(!list.isTicking());
        // Not "da".
        typeKeys("a");
        QCOMPARE(list.current(), QString("alpha"));
    }

    void silenceIsAsLongAsItSays()
    {
        const FindList list(someNames());
        list.find->setSilenceTime(ZListFind::SilenceTime);
        QCOMPARE(ZListFind::SilenceTime, 1500);
        typeKeyAt('d', 1000);
        typeKeyAt('o', 2500);
        QCOMPARE(list.said(), QString("Do"));
        typeKeyAt('m', 4001);
        QCOMPARE(list.said(), QString("M"));
        QCOMPARE(list.current(), QString("Music"));
    }

    void keyThatWasPressedInTimeGoesOnHoweverLateItComes()
    {
        const FindList list(someNames());
        list.find->setSilenceTime(50);
        typeKeyAt('d', 1000);
        QTRY_VERIFY(!list.find->isFinding());
        typeKeyAt('o', 1050);
        QCOMPARE(list.said(), QString("Do"));
        QTRY_VERIFY(!list.find->isFinding());
        // Another key was between.
        pressKey(Code::Up);
        typeKeyAt('a', 1060);
        QCOMPARE(list.said().toLower(), QString("a"));
    }

    void otherKeysEndItAndDoWhatTheyAlwaysDo_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("0") << int('0');
        QTest::newRow("*") << int('*');
        QTest::newRow("#") << int('#');
        QTest::newRow("left") << int(Code::Left);
        QTest::newRow("modifier") << int(Code::Modifier);
        QTest::newRow("hide") << int(Code::Hide);
        QTest::newRow("music") << int(Code::Music);
    }

    void otherKeysEndItAndDoWhatTheyAlwaysDo()
    {
        QFETCH(int, key);
        const FindList list(someNames());
        pressKey(key);
        QCOMPARE(list.main.keys, QList<int>{key});
        typeKeys("d");
        pressKey(key);
        QCOMPARE(list.main.keys, QList<int>({key, key}));
        QVERIFY(!list.find->isFinding());
        QVERIFY(!list.isBubbleShown());
    }

    void arrowsAndSelectEndItAndWorkInTheList()
    {
        const FindList list(someNames());
        QList<int> selected;
        connect(list.box, &ZListBox::selected, this, [&](int row) { selected.append(row); });
        typeKeys("d");
        pressKey(Code::Down);
        QCOMPARE(list.current(), QString("Downloads"));
        QVERIFY(!list.find->isFinding());
        typeKeys("m");
        pressKey(Code::Return);
        QCOMPARE(selected, QList<int>{3});
        QVERIFY(!list.isBubbleShown());
    }

    void digitsThatAreTakenAreLeftAlone()
    {
        const FindList list(someNames());
        bool taken = true;
        list.find->setDigitsAreTaken([&taken] { return taken; });
        typeKeys("3");
        QCOMPARE(list.main.keys, QList<int>{'3'});
        QVERIFY(!list.isBubbleShown());
        typeKeys("d");
        QCOMPARE(list.current(), QString("Documents"));
        taken = false;
        typeKeys("6");
        QCOMPARE(list.said(), QString("Do"));
    }

    void keysWithControlAreNotForFinding_data()
    {
        QTest::addColumn<Qt::KeyboardModifier>("modifier");
        QTest::newRow("control") << Qt::ControlModifier;
        QTest::newRow("alt") << Qt::AltModifier;
        QTest::newRow("meta") << Qt::MetaModifier;
    }

    void keysWithControlAreNotForFinding()
    {
        QFETCH(Qt::KeyboardModifier, modifier);
        const FindList list(someNames());
        sendFindKey(QEvent::KeyPress, Qt::Key_D, "d", 0, modifier);
        QVERIFY(!list.isBubbleShown());
        QCOMPARE(list.main.keys, QList<int>{Qt::Key_D});
    }

    void shiftIsOnTheWayToALetter()
    {
        const FindList list(someNames());
        typeKeys("d");
        sendFindKey(QEvent::KeyPress, Qt::Key_Shift, QString());
        QVERIFY(list.find->isFinding());
        sendFindKey(QEvent::KeyPress, Qt::Key_O, "O", 0, Qt::ShiftModifier);
        QCOMPARE(list.said(), QString("Do"));
    }

    void heldLetterIsOnePress()
    {
        const FindList list(someNames());
        sendFindKey(QEvent::KeyPress, Qt::Key_D, "d");
        for (int i = 0; i < 5; ++i)
            sendFindKey(QEvent::KeyPress, Qt::Key_D, "d", 0, {}, true);
        QCOMPARE(list.current(), QString("Documents"));
        QCOMPARE(list.main.keys, QList<int>());
    }

    void punctuationBeginsNothingButGoesOn()
    {
        const FindList list({"x", "a-b", "a_b", "My Pictures", "-x"});
        typeKeys("-");
        QVERIFY(!list.isBubbleShown());
        QCOMPARE(list.main.keys, QList<int>{'-'});
        typeKeys("a_");
        QCOMPARE(list.said(), QString("a_"));
        pressKey(Code::Clear);
        typeKeys("my p");
        QCOMPARE(list.said(), QString("My P"));
        QCOMPARE(list.main.keys, QList<int>{'-'});
    }

    void lettersOfOtherScriptsFind()
    {
        const FindList list({"a", QString::fromUtf8("Документы"), QString::fromUtf8("日本")});
        typeKeys(QString::fromUtf8("до"));
        QCOMPARE(list.box->currentItem(), 1);
        pressKey(Code::Clear);
        typeKeys(QString::fromUtf8("日"));
        QCOMPARE(list.box->currentItem(), 2);
        pressKey(Code::Clear);
        // A key that the toolkit has no number for.
        sendFindKey(QEvent::KeyPress, Qt::Key_unknown, QString::fromUtf8("Д"));
        QCOMPARE(list.box->currentItem(), 1);
    }

    void keyMapDecides()
    {
        const ScratchFolder folder;
        folder.write("keymap.cfg", "Q = 0x1031\nW = none\nE = 3\nR = d\n");
        KeyMap::instance().load(folder.path("keymap.cfg"));
        const FindList list(someNames());
        typeKeys("q");
        QCOMPARE(list.main.keys, QList<int>{Code::Hide});
        typeKeys("w");
        QVERIFY(!list.isBubbleShown());
        typeKeys("e");
        QCOMPARE(list.said(), QString("D"));
        pressKey(Code::Clear);
        typeKeys("r");
        QCOMPARE(list.said(), QString("D"));
    }

    void itEndsWithTheFocus()
    {
        FindList list(someNames());
        takeForActive(ZScreen::instance()->window());
        typeKeys("d");
        QVERIFY(list.find->isFinding());
        QWidget other(&list.main);
        other.show();
        other.setFocus();
        QVERIFY(!list.find->isFinding());
        QVERIFY(!list.isBubbleShown());
    }

    void itEndsWhenTheListIsFilledAnewOrMovedOtherwise()
    {
        const FindList list(someNames());
        typeKeys("d");
        tapScreen(list.rowPoint(4));
        QCOMPARE(list.box->currentItem(), 4);
        QVERIFY(!list.find->isFinding());
        typeKeys("d");
        QVERIFY(list.isBubbleShown());
        list.box->clear();
        QVERIFY(!list.isBubbleShown());
    }

    void emptyListHasNothingToFind()
    {
        const FindList list({});
        typeKeys("d3");
        QCOMPARE(list.said(), QString("!d3"));
    }

    void rowOutOfViewComesIntoTheMiddle()
    {
        QStringList names;
        for (int i = 0; i < 100; ++i)
            names.append(QString("f%1").arg(i, 2, 10, QChar('0')));
        names[50] = "target";
        const FindList list(names);
        typeKeys("t");
        const int place = list.box->currentItem() - list.box->topItem();
        QVERIFY2(std::abs(place - list.box->visibleItems() / 2) <= 1,
                 qPrintable(QString::number(place)));
        // One that is in view stays where it is.
        const int top = list.box->topItem();
        typeKeys("x");
        pressKey(Code::Up);
        pressKey(Code::Clear);
        typeKeys("ta");
        QCOMPARE(list.box->topItem(), top);
    }

    void rowsThatAreNotSeenAreNotMade()
    {
        ListFixture late;
        constexpr int Rows = 5000;
        QByteArrayList names;
        for (int i = 0; i < Rows; ++i)
            names.append("f" + QByteArray::number(i));
        names.last() = "target";
        std::set<int> made;
        late.box->appendLater(Rows, 1, QSize(), [&](int number) {
            made.insert(number);
            auto* row = new ZListBoxItem(late.box, late.layout);
            row->appendSubItem(1, QString::fromUtf8(names.at(number)), false);
            return row;
        });
        late.box->setCurrentItem(0);
        new ZListFind(late.box, [&names](int row) { return QByteArrayView(names.at(row)); });
        typeKeys("t");
        QCOMPARE(late.box->currentItem(), Rows - 1);
        late.box->grab();
        QVERIFY(int(made.size()) <= 2 * late.box->visibleItems());
    }

    void listWithoutItLeavesLettersAndDigitsAlone()
    {
        ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(0);
        typeKeys("d2");
        QCOMPARE(list.main.keys, QList<int>({Qt::Key_D, '2'}));
        QCOMPARE(list.box->currentItem(), 0);
    }
};

QUARN_TEST_MAIN(tst_ZListFind)
#include "tst_zlistfind.moc"
