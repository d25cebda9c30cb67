#include "platform/zskinservice.h"
#include "plugins/desktop/desktopwindow.h"
#include "plugins/lyraplayer/messagebar.h"
#include "plugins/lyraplayer/nowplaying.h"
#include "plugins/lyraplayer/player.h"
#include "plugins/support/notice.h"
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
                                     texts.endedBySignal.arg(15), texts.programStopped}) {
            window.showTitle("backup.sh", state);
            expectDrawn(window, {"backup.sh · " + state});
        }
    }

    void noticesAreBrokenBetweenWords_data() { addLanguages(); }
    void noticesAreBrokenBetweenWords()
    {
        const PluginTexts& texts = pluginTexts();
        const QRect page(0, 0, ZScreen::Width, 280);
        for (const QString& text : {texts.noFile,
                                    texts.noSuchFile,
                                    texts.isFolder,
                                    texts.notRegular,
                                    texts.mayNotRead,
                                    texts.cannotOpen.arg("Too many open files"),
                                    texts.cannotOpen.arg(texts.ioError),
                                    texts.cannotOpen.arg(texts.readOnly),
                                    texts.cannotOpen.arg(texts.noSpace),
                                    texts.fileEmpty,
                                    texts.notAPicture,
                                    texts.pictureDamaged,
                                    texts.pictureTooLarge.arg("20000", "10000"),
                                    texts.pictureFileTooLarge,
                                    texts.notExecutable,
                                    texts.noOutputYet,
                                    texts.noOutput,
                                    texts.cannotRun.arg("python3", texts.notFound),
                                    texts.cannotRun.arg("python3", texts.noPermission),
                                    texts.cannotRun.arg("python3", texts.aFolder),
                                    texts.noProgram.arg(".pdf"),
                                    texts.noProgram.arg(texts.thisFile),
                                    texts.programFailed.arg(".pdf"),
                                    texts.noOpener,
                                    texts.installProgram,
                                    texts.anotherWay,
                                    texts.onlyPicture}) {
            const auto drawn = textsDrawnOn(page.size(), [&](QPainter& painter) {
                painter.setFont(ZSkinService::font(ProgramNames::Font, 14, 25));
                paintNotice(painter, page, text);
            });
            QCOMPARE(misplaced(drawn, page), QString());
            QStringList lines;
            for (const DrawnText& line : drawn)
                lines.append(line.text.trimmed());
            QVERIFY2(isBrokenBetweenWords(lines, text), qPrintable(lines.join('|')));
        }
    }

    void whatHandsOverIsBrokenBetweenWords_data() { addLanguages(); }
    void whatHandsOverIsBrokenBetweenWords()
    {
        for (const Handover outcome :
             {Handover::NoFile, Handover::NoOpener, Handover::NoProgram, Handover::Failed}) {
            for (const char* file : {"/x/a.pdf", "/x/a", "/x/a.longestending"}) {
                DesktopWindow window(file, outcome);
                window.show();
                const QList<DrawnText> drawn = textsDrawnBy(window);
                QCOMPARE(misplaced(drawn, window.rect()), QString());
                QStringList lines;
                for (const DrawnText& line : drawn) {
                    if (line.text != pluginTexts().exit && line.text != window.mainWidgetTitle())
                        lines.append(line.text);
                }
                const QString whole = window.problem() + ' ' + window.advice();
                QVERIFY2(isBrokenBetweenWords(lines, whole.trimmed()), qPrintable(lines.join('|')));
            }
        }
    }

    void statesOfThePlayerAreWhole_data() { addLanguages(); }
    void statesOfThePlayerAreWhole()
    {
        const PluginTexts& texts = pluginTexts();
        Player player({});
        player.setTracks({"/a.mp3", "/b.mp3"});
        NowPlaying page(player, ZScreen::instance());
        page.resize(ZScreen::Width, 280);
        expectDrawn(page, {texts.stopped, texts.okForList, "1 / 2", "a"});
        player.play(0);
        expectDrawn(page, {texts.opening, texts.okForList});
        player.setTracks({});
        expectDrawn(page, {texts.noMusic});
        // The others stand where these do.
        const QFontMetrics metrics(ZSkinService::font(QApplication::font().family(), 12, 25));
        for (const QString& state : {texts.playing, texts.paused})
            QVERIFY(metrics.horizontalAdvance(state) <= metrics.horizontalAdvance(texts.opening) ||
                    metrics.horizontalAdvance(state) <= (ZScreen::Width - 20) / 3);
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
              texts.skipped.arg("song.mp3", texts.unknownFormat),
              texts.skipped.arg("song.mp3", texts.loadingFailed),
              texts.noSound.arg(texts.noAudioOutput), texts.mpvNoAnswer, texts.mpvNoConnection,
              texts.mpvNotStarted, texts.mpvEnded, texts.mpvTooOld}) {
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
