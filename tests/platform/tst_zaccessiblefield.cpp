#include "tests/platform/keypadfixture.h"
#include "tests/support/listeners.h"
#include "tests/support/testmain.h"

#include <QImage>

/// An entry field as programs that read the screen know it.
class tst_ZAccessibleField : public KeypadFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void textIsReadAsItIs()
    {
        // The field shows a mark for what cannot be seen, which is still a part of the name.
        const QString name = QStringLiteral("a\u200e\u202eb.txt");
        field_->setText(name);
        QCOMPARE(spoken(field_)->text(QAccessible::Value), name);
        QCOMPARE(text()->characterCount(), 8);
        QCOMPARE(text()->text(1, 4), name.mid(1, 3));
        QVERIFY(spoken(field_)->state().editable);
        QVERIFY(spoken(field_)->state().selectableText);
    }

    void textIsEdited()
    {
        field_->setText("song.mp3");
        QAccessibleEditableTextInterface* edited = spoken(field_)->editableTextInterface();
        edited->insertText(4, "s");
        QCOMPARE(field_->text(), QString("songs.mp3"));
        QCOMPARE(text()->cursorPosition(), 5);
        edited->deleteText(0, 4);
        QCOMPARE(field_->text(), QString("s.mp3"));
        edited->replaceText(0, 100, "b\u202e");
        QCOMPARE(field_->text(), QString("b\u202e"));
        spoken(field_)->setText(QAccessible::Value, "c");
        QCOMPARE(field_->text(), QString("c"));
    }

    void editingSettlesTheLetterBeingTyped()
    {
        field_->setText("bc");
        field_->setCursorPosition(0);
        press("2");
        QCOMPARE(text()->text(0, 10), QString("bc"));
        spoken(field_)->editableTextInterface()->insertText(3, "d");
        QCOMPARE(field_->text(), QString("abcd"));
    }

    void cursorAndSelectionAreMoved()
    {
        field_->setText("song.mp3");
        text()->setCursorPosition(4);
        QCOMPARE(field_->cursorPosition(), 4);
        QCOMPARE(text()->selectionCount(), 0);
        text()->addSelection(1, 3);
        QCOMPARE(field_->selectedText(), QString("on"));
        int start = 0;
        int end = 0;
        text()->selection(0, &start, &end);
        QCOMPARE(qMakePair(start, end), qMakePair(1, 3));
        text()->removeSelection(0);
        QCOMPARE(text()->selectionCount(), 0);
    }

    void charactersAreWhereTheirInkIs_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("cursor");
        QTest::newRow("short") << "WiWiWi" << 6;
        QTest::newRow("cursor at the start") << "WiWiWi" << 0;
        QTest::newRow("scrolled to the end") << QString("WiWi ").repeated(20) << 100;
        QTest::newRow("scrolled back to the middle") << QString("WiWi ").repeated(20) << 50;
    }

    void charactersAreWhereTheirInkIs()
    {
        QFETCH(QString, shown);
        QFETCH(int, cursor);
        field_->setText(shown);
        field_->setCursorPosition(cursor);
        field_->clearFocus(); // without it no cursor is drawn
        int seen = 0;
        for (int offset = 0; offset < shown.size(); ++offset) {
            const QRect place = inField(offset);
            if (!inside().contains(place))
                continue;
            ++seen;
            QCOMPARE(text()->offsetAtPoint(text()->characterRect(offset).center()), offset);
            // The edges of letters are smooth, and reach into what is beside them.
            QVERIFY2(hasInk(place.adjusted(1, 0, -1, 0)) == (shown.at(offset) != QLatin1Char(' ')),
                     qPrintable(QString::number(offset)));
        }
        QVERIFY(seen >= 6);
    }

    void placesFollowOneAnother()
    {
        field_->setText("WiW");
        field_->setCursorPosition(3);
        QCOMPARE(inField(0).right() + 1, inField(1).left());
        QCOMPARE(inField(1).right() + 1, inField(2).left());
        QVERIFY(inField(1).width() < inField(0).width());
        // What has scrolled away is beside the field.
        field_->setText(QString(100, 'W'));
        field_->setCursorPosition(100);
        QVERIFY(inField(0).right() < 0);
        QVERIFY(inside().contains(inField(99)));
    }

    void rightToLeftTextBeginsAtTheRight()
    {
        field_->setText(QStringLiteral("\u05d0\u05d1\u05d2"));
        QVERIFY(inField(0).left() > inField(1).left());
        QVERIFY(inField(1).left() > inField(2).left());
        QVERIFY(inside().contains(inField(0)));
        QCOMPARE(text()->offsetAtPoint(text()->characterRect(1).center()), 1);
    }

    void pairOfSurrogatesIsOneCharacter()
    {
        field_->setText(QStringLiteral("a\U0001d11eb"));
        QCOMPARE(text()->characterRect(1), text()->characterRect(2));
        QVERIFY(inField(0).right() < inField(1).left() + 1);
        QVERIFY(inField(2).right() < inField(3).left() + 1);
    }

    void letterBeingTypedMovesWhatIsBehindIt()
    {
        field_->setText("WW");
        field_->setCursorPosition(1);
        const QRect first = inField(0);
        const QRect second = inField(1);
        press("2");
        QCOMPARE(inField(0), first);
        QVERIFY(inField(1).left() > second.left());
        QCOMPARE(inField(1).width(), second.width());
        QCOMPARE(text()->offsetAtPoint(text()->characterRect(1).center()), 1);
    }

    void whatIsNoCharacterHasNoPlace()
    {
        field_->setText("W");
        QVERIFY(text()->characterRect(-1).isEmpty());
        QVERIFY(text()->characterRect(1).isEmpty());
        QCOMPARE(text()->offsetAtPoint(field_->mapToGlobal(QPoint(-1, 5))), -1);
        QCOMPARE(text()->offsetAtPoint(field_->mapToGlobal(inside().center())), -1);
    }

private:
    QAccessibleTextInterface* text() const { return spoken(field_)->textInterface(); }

    /// Where a character is told to be, in the field's coordinates. The toolkit scrolls the text
    /// when it is painted.
    QRect inField(int offset) const
    {
        field_->grab();
        const QRect place = text()->characterRect(offset);
        return {field_->mapFromGlobal(place.topLeft()), place.size()};
    }

    /// The part of the field that its text is drawn in: the badge lies over the rest.
    QRect inside() const
    {
        QRect part = field_->rect().adjusted(2, 0, -2, 0);
        part.setRight(badge()->x() - 1);
        return part;
    }

    /// Whether something dark is drawn there.
    bool hasInk(const QRect& place) const
    {
        const QImage picture = field_->grab(place.adjusted(0, 3, 0, -3)).toImage();
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixelColor(x, y).lightness() < 128)
                    return true;
            }
        }
        return false;
    }
};

QUARN_TEST_MAIN(tst_ZAccessibleField)
#include "tst_zaccessiblefield.moc"
