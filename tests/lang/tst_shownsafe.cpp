#include "extras/failurerows.h"
#include "extras/operationbox.h"
#include "extras/operationtexts.h"
#include "extras/surveypage.h"
#include "platform/zlistbox.h"
#include "platform/zoptionsmenu.h"
#include "tests/lang/shownsafe.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/boxparts.h"

#include <cerrno>
#include <memory>

/// What the screens of operations show in each language, with the font and in the places that it
/// has there.
class tst_ShownSafe : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void init()
    {
        QFETCH(QString, language);
        main_ = mainWidgetForSafe(language);
    }

    void cleanup() { main_.reset(); }

    void pageBeforeIsWhole_data() { addLanguages(); }
    void pageBeforeIsWhole()
    {
        constexpr qint64 Gigabyte = qint64(1) << 30;
        const SafeTexts& texts = SafeTexts::instance();
        SurveyResult survey;
        survey.hasRoom = false;
        survey.neededBytes = 123 * Gigabyte + 123456789;
        survey.freeBytes = 12 * Gigabyte + 123456789;
        const EntryFacts fresh{EntryType::File, 123 * Gigabyte, 1700000000 * qint64(1000000000)};
        for (int i = 0; i < 3; ++i)
            survey.conflicts.add({"/a/song.mp3", "/b/song.mp3", fresh, fresh});
        SurveyPage page(survey, OperationKind::Move);
        page.show();
        expectDrawn(page, {LANG_MOVING, LANG_MOVE, LANG_CANCEL, texts.keepBoth, "song.mp3",
                           filledText(texts.newOne, factsText(fresh)),
                           filledText(texts.oldOne, factsText(fresh))});
        QCOMPARE(page.lines().size(), 2);
        pressKey(PhoneKey::Return);
        QVERIFY(page.menu()->isVisible());
        QStringList items;
        for (const QString& answer : {texts.replace, texts.keepBoth, texts.leaveOut})
            items << answer << filledText(texts.forAll, answer);
        expectDrawn(*page.menu(), items);
    }

    void reasonsAreWhole_data() { addLanguages(); }
    void reasonsAreWhole()
    {
        EntryPage page(titleOf(OperationKind::Delete));
        page.setSoftKeys({}, LANG_BACK);
        page.show();
        for (int trouble = 0; trouble <= int(Trouble::ChangedSince); ++trouble)
            expectReason(page, {"/folder/name", Trouble(trouble), 0});
        for (const int error : {ENOSPC, EDQUOT, EACCES, EROFS, EIO, ENODEV, ENOENT, ENAMETOOLONG,
                                EFBIG, EBUSY, EEXIST, ENOTEMPTY})
            expectReason(page, {"/folder/name", Trouble::CannotWrite, error});
    }

    void progressIsWhole_data() { addLanguages(); }
    void progressIsWhole()
    {
        const SafeTexts& texts = SafeTexts::instance();
        OperationProgress progress;
        progress.bytesTotal = (qint64(1) << 40) - 1;
        progress.bytesDone = progress.bytesTotal - 1;
        progress.bytesPerSecond = 1023.99 * 1024 * 1024;
        progress.secondsLeft = 35999;
        for (const QString& title : {LANG_COPYING, LANG_MOVING, texts.deleting, texts.takingBack}) {
            OperationBox box(title);
            const QStringList lines{"song.mp3", doneText(progress), paceText(progress)};
            box.showLines(lines, 99);
            QCOMPARE(box.lines(), lines);
            box.showLines({texts.cancelling, filledText(texts.counting, "1234567")}, -1);
            QCOMPARE(box.lines(),
                     QStringList({texts.cancelling, filledText(texts.counting, "1234567")}));
        }
    }

    void questionBeforeDeletingBreaksBetweenWords_data() { addLanguages(); }
    void questionBeforeDeletingBreaksBetweenWords()
    {
        BoxFont font = Box::titleFont();
        const QString title = SafeTexts::instance().deleteThese;
        const QStringList lines = font.wrapped(title, Box::TextWidth).texts;
        QVERIFY(lines.size() <= 2);
        QVERIFY2(isBrokenBetweenWords(lines, title), qPrintable(title));
    }

    void unfinishedWorkIsWhole_data() { addLanguages(); }
    void unfinishedWorkIsWhole()
    {
        const SafeTexts& texts = SafeTexts::instance();
        EntryPage page(texts.unfinished);
        page.setSoftKeys(LANG_SELECT, texts.later);
        page.setLines({filledText(texts.replacedStay, "12345")});
        page.setRows({{texts.finish, texts.finishing, {}},
                      {texts.takeBack, texts.takeBackCopy, {}},
                      {texts.takeBack, texts.takeBackMove, {}},
                      {texts.later, texts.laterAsks, {}},
                      {texts.forget, texts.forgetting, {}}},
                     true);
        page.show();
        expectDrawn(page, {texts.unfinished, LANG_SELECT, texts.later, "1  " + texts.finish,
                           texts.finishing, "2  " + texts.takeBack, texts.takeBackCopy,
                           texts.takeBackMove, texts.laterAsks, texts.forgetting,
                           filledText(texts.replacedStay, "12345")});
        page.setLines({texts.wasCancelled, texts.damaged});
        expectDrawn(page, {texts.wasCancelled, texts.damaged});
    }

private:
    static void expectReason(EntryPage& page, const Failure& failure)
    {
        Listed<Failure> failures;
        failures.add(failure);
        page.setLines({filledText(SafeTexts::instance().notDone, "12345")});
        page.setRows(failureRows(failures));
        const QString what =
            failure.error != 0 ? errorText(failure.error) : troubleText(failure.trouble);
        expectDrawn(page, {"name", what, "/folder"});
    }

    std::unique_ptr<QWidget> main_;
};

QUARN_TEST_MAIN(tst_ShownSafe)
#include "tst_shownsafe.moc"
