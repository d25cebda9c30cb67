// What the program asks at its start about operations that were cut short.

#include "extras/journal.h"
#include "extras/journalreader.h"
#include "extras/journals.h"
#include "extras/unfinished.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "tests/extras/operationplaces.h"
#include "tests/extras/safescreens.h"
#include "tests/support/bytefiles.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"

#include <memory>

namespace
{

JournalRecord made(const QByteArray& name, bool replaces)
{
    JournalRecord record;
    record.from = name;
    record.to = name;
    record.identity = {3, 4};
    record.replaces = replaces;
    return record;
}

/// Short enough to be shown whole.
constexpr char Target[] = "/there";

/// The path of a journal that nobody works with. The second of its entries took another's place.
QByteArray abandoned(OperationRequest request)
{
    request.target = Target;
    const auto journal = Journal::begin(request, {});
    journal->add(made("one", false));
    journal->add(made("two", true));
    journal->flush();
    return journal->path();
}

/// Changes a byte of the first entry's record.
void damageInside(const QByteArray& path)
{
    QByteArray bytes = readFile(path);
    const qsizetype record = JournalReader::framed(made("one", false).toBytes()).size();
    bytes[bytes.size() - 2 * record + 10] ^= 1;
    writeFile(path, bytes);
}

const QString Finish = QStringLiteral("1  Finish|Goes on where it stopped");

} // namespace

class tst_Unfinished : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        loadTexts(QString());
        main_ = showMainWidget();
        places_.emplace();
        lines_.clear();
        rows_.clear();
    }
    void cleanup()
    {
        main_.reset();
        places_.reset();
    }

    void nothingIsAskedWhereNothingWasCutShort()
    {
        QVERIFY(!offerUnfinishedOperations());
        QVERIFY(entryPage() == nullptr);
    }

    void tellsWhatItWas_data()
    {
        QTest::addColumn<OperationKind>("kind");
        QTest::addColumn<QByteArrayList>("names");
        QTest::addColumn<QString>("what");
        QTest::newRow("copy") << OperationKind::Copy << QByteArrayList{"a"} << "Copying: a";
        QTest::newRow("move of several")
            << OperationKind::Move << QByteArrayList{"a", "b", "c"} << "Moving: Entries: 3";
        QTest::newRow("delete") << OperationKind::Delete << QByteArrayList{"a"} << "Deleting: a";
    }
    void tellsWhatItWas()
    {
        QFETCH(OperationKind, kind);
        QFETCH(QByteArrayList, names);
        QFETCH(QString, what);
        const QByteArray path = abandoned(places_->request(kind, names));
        offerAndLeave();
        // What is deleted has no target, and nothing of it can be taken back.
        const bool isDelete = kind == OperationKind::Delete;
        QCOMPARE(lines_.first(), isDelete ? QStringList{what}
                                          : QStringList({what, Target, "Replaced for good: 1"}));
        QCOMPARE(rows_.first().size(), isDelete ? 3 : 4);
        QCOMPARE(rows_.first().first(), Finish);
        QCOMPARE(rows_.first().filter("Take back").size(), isDelete ? 0 : 1);
        QVERIFY(isThere(path));
    }

    void whatIsDamagedIsTold()
    {
        damageInside(abandoned(places_->request(OperationKind::Copy, {"a"})));
        offerAndLeave();
        QCOMPARE(lines_.first(),
                 (QStringList{"Copying: a", Target, "The notes on it are damaged"}));
        QCOMPARE(rows_.first().first(), Finish);
    }

    void whatWasCancelledIsToldUntilItIsGoneOnWith()
    {
        const QByteArray path = abandoned(places_->request(OperationKind::Copy, {"a"}));
        Journal::note(path, JournalRecord::Type::Cancelled);
        offerAndLeave();
        QCOMPARE(lines_.first(), (QStringList{"Copying: a", Target, "Was cancelled, not yet ended",
                                              "Replaced for good: 1"}));
        Journal::resume(path).reset();
        offerAndLeave();
        QCOMPARE(lines_.last(), (QStringList{"Copying: a", Target, "Replaced for good: 1"}));
    }

    void whatCannotBeReadCanOnlyBeForgotten_data()
    {
        QTest::addColumn<QByteArray>("start");
        QTest::addColumn<QString>("line");
        QTest::newRow("damaged") << QByteArray("quarn jOurnal") << "The notes on it are damaged";
        QTest::newRow("of an older version")
            << QByteArray("quarn journal 1\n") << "Begun by an older Quarn";
    }
    void whatCannotBeReadCanOnlyBeForgotten()
    {
        QFETCH(QByteArray, start);
        QFETCH(QString, line);
        const QByteArray path = abandoned(places_->request(OperationKind::Copy, {"a"}));
        writeFile(path, readFile(path).replace(0, start.size(), start));
        offer([] { pressKey('2'); });
        QCOMPARE(lines_.first(), QStringList{line});
        QCOMPARE(rows_.first(), (QStringList{"1  Later|Asks at the next start",
                                             "2  Forget|Leaves all as it is now"}));
        QVERIFY(!isThere(path));
    }

    void whichIsAnsweredByTheLeftKeyIsTheHighlightedOne()
    {
        const QByteArray path = abandoned(places_->request(OperationKind::Copy, {"a"}));
        offer([] {
            for (int row = 0; row < 3; ++row)
                pressKey(PhoneKey::Down);
            pressKey(PhoneKey::SoftLeft);
        });
        QVERIFY(!isThere(path));
    }

    void eachIsAskedAboutTheOldestFirst()
    {
        for (const char* name : {"first", "second"})
            abandoned(places_->request(OperationKind::Copy, {name}));
        once(pageHasKeys, [this] {
            note();
            once([] { return pageHasKeys() && pageLines().first().endsWith("second"); },
                 [this] {
                     note();
                     pressKey(PhoneKey::SoftRight);
                 });
            pressKey(PhoneKey::SoftRight);
        });
        QVERIFY(!offerUnfinishedOperations());
        QCOMPARE(lines_.value(0).first(), "Copying: first");
        QCOMPARE(lines_.value(1).first(), "Copying: second");
        QCOMPARE(findJournals().size(), qsizetype(2));
    }

private:
    void note()
    {
        lines_.append(pageLines());
        rows_.append(pageRows());
    }
    void offer(const std::function<void()>& answer)
    {
        once(pageHasKeys, [this, &answer] {
            note();
            answer();
        });
        offerUnfinishedOperations();
    }
    void offerAndLeave()
    {
        offer([] { pressKey(PhoneKey::SoftRight); });
    }

    std::unique_ptr<QWidget> main_;
    std::optional<OperationPlaces> places_;
    QList<QStringList> lines_;
    QList<QStringList> rows_;
};

QUARN_TEST_MAIN(tst_Unfinished)
#include "tst_unfinished.moc"
