#include "plugins/support/plugintexts.h"
#include "plugins/support/pluginwindow.h"
#include "tests/lang/languages.h"
#include "tests/support/testmain.h"
#include "tools/quarn_keys/askedkeys.h"
#include "tools/quarn_keys/questionpage.h"

#include <algorithm>

/// What quarn-keys shows in each language, with the font and in the places that it has there.
class tst_ShownKeys : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void init()
    {
        QFETCH(QString, language);
        loadPluginTexts(stagedLanguageFile(language));
    }

    void cleanup() { loadPluginTexts(QString()); }

    void everyKeyIsAskedForInOneLine_data() { addLanguages(); }
    void everyKeyIsAskedForInOneLine()
    {
        QuestionPage page(ZScreen::instance());
        page.resize(PageSize);
        QStringList names;
        for (const int code : askedKeys()) {
            const QString name = nameOfAsked(code);
            QVERIFY2(!names.contains(name), qPrintable(name));
            names.append(name);
            page.ask({code, name, {}, QString(), false});
            const QList<DrawnText> drawn = textsDrawnBy(page);
            QVERIFY2(isDrawn(drawn, name), qPrintable(name));
            QVERIFY(isDrawn(drawn, pluginTexts().pressThisKey));
            QCOMPARE(misplaced(drawn, page.rect()), QString());
        }
    }

    void messagesAndHintsAreWhole_data() { addLanguages(); }
    void messagesAndHintsAreWhole()
    {
        const PluginTexts& texts = pluginTexts();
        QuestionPage page(ZScreen::instance());
        page.resize(PageSize);
        QStringList messages{texts.keyUnusable};
        for (const int code : askedKeys()) {
            messages.append(texts.keyTaken.arg("Volume Down", nameOfAsked(code)));
            messages.append(nameOfAsked(code) + ": Media Previous");
        }
        for (const QString& message : messages) {
            page.ask({'1', "1", {}, message, true});
            for (const double held : {-1.0, 0.8}) {
                page.showHeld(held);
                const QList<DrawnText> drawn = textsDrawnBy(page);
                QCOMPARE(misplaced(drawn, page.rect()), QString());
                expectLines(drawn, "! " + message);
                expectLines(drawn, held < 0 ? texts.holdToSkip : texts.releaseToSkip);
            }
        }
    }

    void softKeysAreWhole_data() { addLanguages(); }
    void softKeysAreWhole()
    {
        const PluginTexts& texts = pluginTexts();
        PluginWindow window(texts.keysTitle);
        window.show();
        window.showTitle(texts.keysTitle, "27/27");
        for (const QString& left : {texts.save, texts.again}) {
            window.setSoftKeyTexts(left, texts.exit);
            expectDrawn(window, {left, texts.exit, texts.keysTitle + " · 27/27"});
        }
    }

private:
    static constexpr QSize PageSize{ZScreen::Width, 277};

    /// Fails the test unless a text is there as lines that follow one another, broken between
    /// words.
    static void expectLines(const QList<DrawnText>& drawn, const QString& text)
    {
        for (qsizetype first = 0; first < drawn.size(); ++first) {
            QStringList lines;
            for (qsizetype i = first; i < drawn.size() && i < first + 3; ++i) {
                lines.append(drawn.at(i).text.trimmed());
                if (isBrokenBetweenWords(lines, text))
                    return;
            }
        }
        QStringList all;
        std::transform(drawn.begin(), drawn.end(), std::back_inserter(all),
                       [](const DrawnText& each) { return each.text; });
        QFAIL(qPrintable(text + " in " + all.join('|')));
    }
};

QUARN_TEST_MAIN(tst_ShownKeys)
#include "tst_shownkeys.moc"
