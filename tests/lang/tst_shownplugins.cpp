#include "plugins/lyraplayer/messagebar.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/pluginwindow.h"
#include "tests/lang/languages.h"
#include "tests/support/testmain.h"

/// What the plugins show in each language, with the font and in the places that it has there.
class tst_ShownPlugins : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void init()
    {
        QFETCH(QString, language);
        loadPluginTexts(stagedLanguageFile(language));
    }

    void softKeysAreWhole_data() { addLanguages(); }
    void softKeysAreWhole()
    {
        const PluginTexts& texts = pluginTexts();
        PluginWindow window("Plugin");
        window.show();
        for (const QString& left :
             {texts.longLines, texts.wrapLines, texts.zoom, texts.fit, texts.slideShow, texts.stop,
              texts.again, texts.play, texts.pause}) {
            for (const QString& right : {texts.exit, texts.back, texts.stop}) {
                window.setSoftKeyTexts(left, right);
                expectDrawn(window, {left, right});
            }
        }
    }

    void statesStandInTheTitle_data() { addLanguages(); }
    void statesStandInTheTitle()
    {
        const PluginTexts& texts = pluginTexts();
        PluginWindow window("Plugin");
        window.show();
        for (const QString& state : {texts.running, texts.stopping, texts.exitCode.arg(127),
                                     texts.endedBySignal.arg(15)}) {
            window.showTitle("backup.sh", state);
            expectDrawn(window, {"backup.sh  " + state});
        }
    }

    void messagesOfThePlayerAreWhole_data() { addLanguages(); }
    void messagesOfThePlayerAreWhole()
    {
        const PluginTexts& texts = pluginTexts();
        MessageBar bar(ZScreen::instance());
        bar.resize(ZScreen::Width, 1);
        for (const QString& text :
             {texts.chooseMusic, texts.listUnreadable.arg("/home/user/all.m3u"), texts.listEmpty,
              texts.lastTrack, texts.skipped.arg("song.mp3", texts.notAFile),
              texts.skippedTracks.arg("12", "song.mp3", texts.nothingToPlay),
              texts.noSound.arg("audio output initialization failed"), texts.mpvNoAnswer,
              texts.mpvNoConnection, texts.mpvNotStarted, texts.mpvEnded, texts.mpvTooOld}) {
            bar.setText(text);
            QString drawn;
            for (const DrawnText& line : textsDrawnBy(bar))
                drawn += line.text;
            QCOMPARE(drawn.remove(' '), QString(text).remove(' '));
        }
    }
};

QUARN_TEST_MAIN(tst_ShownPlugins)
#include "tst_shownplugins.moc"
