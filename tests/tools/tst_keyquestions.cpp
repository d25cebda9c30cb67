#include "tests/support/testmain.h"
#include "tools/quarn_keys/keyquestions.h"

namespace
{

GivenKey keyOf(int key, quint32 scan = 0)
{
    return {key, scan, 0};
}

} // namespace

/// The order of the questions for keys, and what a key that was given before does.
class tst_KeyQuestions : public QObject
{
    Q_OBJECT

private slots:
    void keysAreAskedForInTurn()
    {
        KeyQuestions questions({1, 2, 3});
        QCOMPARE(questions.count(), 3);
        for (const int code : {1, 2, 3}) {
            QVERIFY(!questions.isOver());
            QCOMPARE(questions.current(), code);
            QCOMPARE(questions.place(), code);
            QCOMPARE(questions.answer(keyOf(Qt::Key_A + code)), KeyQuestions::Given);
        }
        QVERIFY(questions.isOver());
        QCOMPARE(questions.answers().size(), 3);
        QCOMPARE(questions.answerFor(2), keyOf(Qt::Key_A + 2));
    }

    void skippedOnesHaveNoAnswer()
    {
        KeyQuestions questions({1, 2, 3, 4});
        questions.skip();
        questions.answer(keyOf(Qt::Key_A));
        QCOMPARE(questions.current(), 3);
        questions.skipAll();
        QVERIFY(questions.isOver());
        QCOMPARE(questions.current(), 0);
        QCOMPARE(questions.answers().size(), 1);
        QVERIFY(!questions.answerFor(1));
    }

    void givenKeyIsWarnedOfAndMovesWhenItIsPressedAgain()
    {
        KeyQuestions questions({1, 2});
        questions.answer(keyOf(Qt::Key_A));
        QCOMPARE(questions.answer(keyOf(Qt::Key_A)), KeyQuestions::TakenNow);
        QCOMPARE(questions.takenFor(), 1);
        QCOMPARE(questions.current(), 2);
        QCOMPARE(questions.answer(keyOf(Qt::Key_A)), KeyQuestions::Given);
        QCOMPARE(questions.answerFor(2), keyOf(Qt::Key_A));
        QVERIFY(!questions.answerFor(1));
        // The first is asked for once more.
        QCOMPARE(questions.current(), 1);
        QCOMPARE(questions.place(), 3);
        QCOMPARE(questions.count(), 3);
        questions.answer(keyOf(Qt::Key_B));
        QVERIFY(questions.isOver());
        QCOMPARE(questions.answers().first().code, 1);
    }

    void anotherKeyAfterTheWarningIsTaken()
    {
        KeyQuestions questions({1, 2, 3});
        questions.answer(keyOf(Qt::Key_A));
        questions.answer(keyOf(Qt::Key_A));
        QCOMPARE(questions.answer(keyOf(Qt::Key_B)), KeyQuestions::Given);
        QCOMPARE(questions.answerFor(1), keyOf(Qt::Key_A));
        // The warning was for that question.
        QCOMPARE(questions.answer(keyOf(Qt::Key_A)), KeyQuestions::TakenNow);
    }

    void twoWarningsAreOfTwoKeys()
    {
        KeyQuestions questions({1, 2, 3});
        questions.answer(keyOf(Qt::Key_A));
        questions.answer(keyOf(Qt::Key_B));
        QCOMPARE(questions.answer(keyOf(Qt::Key_A)), KeyQuestions::TakenNow);
        QCOMPARE(questions.answer(keyOf(Qt::Key_B)), KeyQuestions::TakenNow);
        QCOMPARE(questions.takenFor(), 2);
        QCOMPARE(questions.answer(keyOf(Qt::Key_B)), KeyQuestions::Given);
    }

    void keysAreToldApartByTheKeyboardToo()
    {
        KeyQuestions questions({1, 2, 3});
        questions.answer(keyOf(Qt::Key_unknown, 150));
        QCOMPARE(questions.answer(keyOf(Qt::Key_unknown, 151)), KeyQuestions::Given);
        QCOMPARE(questions.answer(keyOf(Qt::Key_unknown, 150)), KeyQuestions::TakenNow);
    }

    void keyWithoutANameIsNoAnswer()
    {
        KeyQuestions questions({1});
        QCOMPARE(questions.answer(keyOf(Qt::Key_unknown)), KeyQuestions::Unusable);
        QCOMPARE(questions.answer(keyOf(0)), KeyQuestions::Unusable);
        QCOMPARE(questions.current(), 1);
    }
};

QUARN_TEST_MAIN(tst_KeyQuestions)
#include "tst_keyquestions.moc"
