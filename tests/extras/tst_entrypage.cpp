#include "extras/surveypage.h"
#include "extras/trashpage.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/support/drawntexts.h"
#include "tests/support/keys.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"

#include <QAccessible>
#include <QElapsedTimer>
#include <QSet>
#include <QSignalSpy>

#include <memory>
#include <sys/stat.h>

class tst_EntryPage : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        loadTexts(QString());
        main_ = showMainWidget();
        page_ = std::make_unique<EntryPage>("Title");
    }
    void cleanup()
    {
        page_.reset();
        main_.reset();
    }

    void notesAreThoseOfTheHighlightedRow()
    {
        page_->setRows({{"a", "", {"one", "two"}}, {"b", "", {"three"}}});
        page_->show();
        QCOMPARE(page_->notes(), (QStringList{"one", "two"}));
        pressKey(PhoneKey::Down);
        QCOMPARE(page_->notes(), (QStringList{"three", QString()}));
        page_->setRow(1, {"b", "", {"four"}});
        QCOMPARE(page_->notes(), (QStringList{"four", QString()}));
        page_->setRow(0, {"a", "", {"five"}});
        QCOMPARE(page_->notes(), (QStringList{"four", QString()}));
    }

    void rowsOfALongListAreMadeWhenTheyAreSeen()
    {
        constexpr int Many = 10000;
        QSet<int> made;
        page_->setRowsLater(Many, QSize(), [&made](int row) {
            made.insert(row);
            const QString number = QString::number(row);
            return EntryPage::Row{"n" + number, "d" + number, {"one " + number, "two"}};
        });
        page_->show();
        QTRY_VERIFY(!made.isEmpty());
        page_->grab();
        QVERIFY2(made.size() < 50, qPrintable(QString::number(made.size())));
        QCOMPARE(page_->list()->count(), Many);
        QCOMPARE(page_->currentRow(), 0);
        QCOMPARE(page_->notes(), (QStringList{"one 0", "two"}));
        page_->list()->setCurrentItem(Many - 1);
        QCOMPARE(page_->notes(), (QStringList{"one 9999", "two"}));
        QCOMPARE(page_->list()->item(Many - 1)->getSubItemText(1, 1), "d9999");
        QVERIFY(made.size() < 100);
        // Rows of another kind take their place.
        page_->setRows({{"a", "", {"three"}}});
        QCOMPARE(page_->notes(), (QStringList{"three", QString()}));
    }

    void bigTrashIsShownAtOnce()
    {
        constexpr int Many = 10000;
        QList<TrashEntry> entries;
        for (int i = 0; i < Many; ++i) {
            TrashEntry entry;
            entry.trash = "/trash";
            entry.name = QByteArray::number(i);
            entry.path = "/folder/" + entry.name + ".txt";
            entry.deleted = 1700000000;
            entry.bytes = i;
            entry.mode = S_IFREG | 0644;
            entries.append(entry);
        }
        TrashPage page;
        QElapsedTimer timer;
        timer.start();
        page.setEntries(entries);
        page.show();
        page.grab();
        const qint64 shown = timer.nsecsElapsed();
        QCOMPARE(page.list()->count(), Many);
        timer.start();
        for (int row = 0; row < Many; ++row)
            page.list()->item(row);
        // To make all rows takes far longer.
        QVERIFY2(shown * 2 < timer.nsecsElapsed(), qPrintable(QString::number(shown)));
        QCOMPARE(page.list()->item(1)->getSubItemText(1, 0), "1.txt");
    }

    void highlightStaysOnItsEntryWhenOthersCome()
    {
        const auto entry = [](const char* name, qint64 deleted) {
            TrashEntry result;
            result.trash = "/trash";
            result.name = name;
            result.path = QByteArray("/folder/") + name;
            result.deleted = deleted;
            result.mode = S_IFREG | 0644;
            return result;
        };
        TrashPage page;
        page.setEntries({entry("a", 20), entry("b", 10)});
        page.show();
        pressKey(PhoneKey::Down);
        page.setEntries({entry("a", 20), entry("b", 10), entry("late", 30)});
        QCOMPARE(page.currentRow(), 2);
        QCOMPARE(page.current().name, QByteArray("b"));
        // One that has gone leaves its row.
        page.setEntries({entry("a", 20), entry("late", 30)});
        QCOMPARE(page.currentRow(), 1);
    }

    void programsThatReadTheScreenKnowAPage()
    {
        page_->setLines({"Already there: 2"});
        page_->setRows({{"a", "Keep both", {"New: 3 b", "There: 5 b"}}, {"b", "", {}}});
        page_->show();
        QAccessibleInterface* page = QAccessible::queryAccessibleInterface(page_.get());
        QCOMPARE(page->role(), QAccessible::Dialog);
        QVERIFY(page->state().modal);
        QCOMPARE(page->text(QAccessible::Name), "Title");
        QCOMPARE(page->text(QAccessible::Description), "Already there: 2");
        QAccessibleInterface* list = QAccessible::queryAccessibleInterface(page_->list());
        QCOMPARE(list->text(QAccessible::Name), "Title");
        QCOMPARE(list->child(0)->text(QAccessible::Name), "a");
        QCOMPARE(list->child(0)->text(QAccessible::Description), "Keep both New: 3 b There: 5 b");
        QCOMPARE(list->child(1)->text(QAccessible::Description), "");
    }

    void longLineHasRoomInTwo_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("path") << QString("/folder").repeated(100);
        QTest::newRow("words") << QString("some words ").repeated(100);
        QTest::newRow("long words") << QString(50, 'w') + ' ' + QString(50, 'v');
    }

    void longLineHasRoomInTwo()
    {
        QFETCH(QString, line);
        page_->setLines({line, "end"});
        page_->setRows({{"a", "", {}}});
        page_->show();
        QCOMPARE(page_->lines().size(), 2);
        QVERIFY(page_->lines().at(0).contains(QChar(0x2026)));
        QCOMPARE(page_->lines().at(1), QString("end"));
        const QList<DrawnText> drawn = textsDrawnBy(*page_);
        QCOMPARE(misplaced(drawn, page_->rect()), QString());
        QVERIFY(isDrawn(drawn, "end"));
        // The list begins below three lines.
        const int top = page_->list()->mapTo(page_.get(), QPoint()).y();
        QVERIFY(top <= ZSkinService::HeaderHeight + 3 * 20);
    }

    void longDetailIsCutBeforeWhatStandsAtTheEdge()
    {
        page_->setRows({{"a", QString(100, 'x') + "\tend", {}}});
        const QString detail = page_->list()->item(0)->getSubItemText(1, 1);
        QVERIFY(detail.startsWith("xx") && detail.endsWith("\tend"));
        QVERIFY(detail.contains(QChar(0x2026)));
    }

    /// Of a row with an icon the detail begins behind it, and ends before the date at the edge.
    void detailIsCutOnlyWhereItHasNoRoom()
    {
        QPixmap icon(32, 32);
        icon.fill(Qt::blue);
        class Page : public EntryPage
        {
        public:
            using EntryPage::detailFont;
            using EntryPage::EntryPage;
        };
        Page page("Title");
        const QFontMetrics metrics(page.detailFont());
        const QString date = "\t20/11/2026";
        constexpr int Text = ZScreen::Width - 5 - 32 - 3 - ZSkinService::ScrollBarWidth - 2;
        const int room = Text - 8 - metrics.horizontalAdvance(date.mid(1));
        QString fitting = "/";
        // Widths are rounded.
        while (metrics.horizontalAdvance(fitting + 'n') < room - 1)
            fitting += 'n';
        page.setRows({{"a", fitting + date, {}, icon}, {"b", fitting + "nn" + date, {}, icon}});
        QCOMPARE(page.list()->item(0)->getSubItemText(1, 1), fitting + date);
        QVERIFY(page.list()->item(1)->getSubItemText(1, 1).contains(QChar(0x2026)));
    }

    void digitsChooseIfRowsHaveThem_data()
    {
        QTest::addColumn<bool>("digits");
        QTest::newRow("with") << true;
        QTest::newRow("without") << false;
    }

    void digitsChooseIfRowsHaveThem()
    {
        QFETCH(bool, digits);
        page_->setRows({{"a", "", {}}, {"b", "", {}}}, digits);
        page_->show();
        const QSignalSpy chosen(page_.get(), &EntryPage::chosen);
        for (const int key : {'0', '2', '3', '9'})
            pressKey(key);
        QCOMPARE(chosen.size(), digits ? 1 : 0);
        if (digits)
            QCOMPARE(chosen.first().first().toInt(), 1);
        QCOMPARE(page_->list()->item(1)->getSubItemText(1, 0), QString(digits ? "2  b" : "b"));
    }

    void softKeysDoOnlyWhatTheySay()
    {
        page_->setRows({{"a", "", {}}});
        page_->setSoftKeys("Go", QString());
        page_->show();
        const QSignalSpy left(page_.get(), &EntryPage::leftPressed);
        const QSignalSpy right(page_.get(), &EntryPage::rightPressed);
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(right.size(), 0);
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(left.size(), 1);
        page_->setSoftKeys(QString(), "Back");
        pressKey(PhoneKey::SoftLeft);
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(left.size(), 1);
        QCOMPARE(right.size(), 1);
    }

    void keyThatIsStillHeldAnswersNothing()
    {
        page_->setRows({{"a", "", {}}}, true);
        page_->setSoftKeys("Go", "Back");
        page_->show();
        const QSignalSpy left(page_.get(), &EntryPage::leftPressed);
        const QSignalSpy chosen(page_.get(), &EntryPage::chosen);
        repeatKey(PhoneKey::SoftLeft);
        repeatKey('1');
        QCOMPARE(left.size() + chosen.size(), 0);
    }

    void conflictsBeyondTheListAreAnsweredTogether()
    {
        SurveyResult survey;
        constexpr int Beyond = 7;
        for (qint64 i = 0; i < Listed<Conflict>::Most + Beyond; ++i)
            survey.conflicts.add({"/a/x", "/b/x", {}, {}});
        SurveyPage page(survey, OperationKind::Copy);
        page.show();
        const int last = int(Listed<Conflict>::Most);
        const auto row = [&page](int index) {
            const ZListBoxItem* item = page.list()->item(index);
            return item->getSubItemText(1, 0) + '|' + item->getSubItemText(1, 1);
        };
        QCOMPARE(page.list()->count(), last + 1);
        QCOMPARE(row(last), QString("And 7 more|Keep both"));
        page.list()->setCurrentItem(0);
        pressKey(PhoneKey::Return);
        pressKey('1');
        QCOMPARE(page.answer(0), Answer::Replace);
        QCOMPARE(page.answer(1), Answer::KeepBoth);
        QCOMPARE(row(last), QString("And 7 more|Keep both"));
        // The row of the others stands for all.
        page.list()->setCurrentItem(last);
        pressKey(PhoneKey::Return);
        pressKey('3');
        QCOMPARE(row(last), QString("And 7 more|Leave out"));
        QCOMPARE(page.answer(0), Answer::LeaveOut);
        QCOMPARE(row(last - 1), QString("x|Leave out"));
    }

    void whatCannotBeDoneHasNoMenu()
    {
        SurveyResult survey;
        survey.conflicts.add({"/a/x", "/b/x", {}, {}});
        survey.troubles.add({"/a/y", Trouble::TooLarge, 0});
        SurveyPage page(survey, OperationKind::Copy);
        page.show();
        pressKey(PhoneKey::Down);
        pressKey(PhoneKey::Return);
        QVERIFY(page.menu() == nullptr);
        QCOMPARE(page.lines(), (QStringList{"Already there: 1 (OK: choose)", "Not possible: 1"}));
    }

    void tooLittleRoomIsSaid()
    {
        SurveyResult survey;
        survey.hasRoom = false;
        survey.neededBytes = qint64(5) << 30;
        survey.freeBytes = 1536;
        const SurveyPage page(survey, OperationKind::Copy);
        QCOMPARE(page.lines(), QStringList(QString::fromUtf8(
                                   "Too little room: 5\u00a0Gb needed, 1.5\u00a0Kb free")));
    }

private:
    std::unique_ptr<QWidget> main_;
    std::unique_ptr<EntryPage> page_;
};

QUARN_TEST_MAIN(tst_EntryPage)
#include "tst_entrypage.moc"
