#pragma once

#include "files/programnames.h"
#include "platform/qdiskfont.h"
#include "platform/zscreen.h"
#include "tests/support/drawntexts.h"

#include <QApplication>
#include <QDir>
#include <QTest>
#include <QWidget>

// What the tests of the installed languages share.

/// A row for each language, its name in the column "language".
inline void addLanguages()
{
    QTest::addColumn<QString>("language");
    const QDir folder(QStringLiteral(QUARN_STAGE_DIR "/lang"));
    for (const QString& file : folder.entryList({QStringLiteral("*.lang")}, QDir::Files))
        QTest::newRow(qPrintable(file)) << file.section(QLatin1Char('.'), 0, 0);
}

inline QString stagedLanguageFile(const QString& language)
{
    return QStringLiteral(QUARN_STAGE_DIR "/lang/%1.lang").arg(language);
}

/// The font that everything is shown with.
inline void useStagedFont()
{
    QDiskFont record;
    record.name = ProgramNames::Font;
    record.file = QStringLiteral(QUARN_STAGE_DIR "/res/font.ttf");
    ZFontManager::addDiskFont(record);
    QApplication::setFont(QFont(ProgramNames::Font));
    QCOMPARE(QFontInfo(QFont(ProgramNames::Font)).family(), QString(ProgramNames::Font));
}

/// Fails the test unless a widget draws each of these texts whole and in a place of its own.
inline void expectDrawn(QWidget& widget, const QStringList& texts)
{
    const QList<DrawnText> drawn = textsDrawnBy(widget);
    for (const QString& text : texts)
        QVERIFY2(text.isEmpty() || isDrawn(drawn, text), qPrintable(text));
    QCOMPARE(misplaced(drawn, widget.rect()), QString());
}

/// Whether a line may end between two characters neither of which is a blank: behind a hyphen, and
/// beside those of scripts without blanks.
inline bool isPlaceToBreak(QChar before, QChar behind)
{
    constexpr char16_t FirstWithoutBlanks = 0x2e80;
    return before == QLatin1Char('-') || before.unicode() >= FirstWithoutBlanks ||
           behind.unicode() >= FirstWithoutBlanks;
}

/// Whether lines are a text that was broken between its words.
inline bool isBrokenBetweenWords(const QStringList& lines, const QString& text)
{
    qsizetype end = 0;
    for (const QString& line : lines) {
        if (end >= text.size())
            return false;
        if (end > 0 && text.at(end) == QLatin1Char(' '))
            ++end;
        else if (end > 0 && !isPlaceToBreak(text.at(end - 1), text.at(end)))
            return false;
        if (text.mid(end, line.size()) != line)
            return false;
        end += line.size();
    }
    return end == text.size();
}
