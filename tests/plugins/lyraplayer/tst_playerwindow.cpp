#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "platform/ztheme.h"
#include "plugins/lyraplayer/messagebar.h"
#include "plugins/lyraplayer/nowplaying.h"
#include "plugins/lyraplayer/player.h"
#include "plugins/lyraplayer/playerwindow.h"
#include "tests/browser/picturefiles.h"
#include "tests/plugins/lyraplayer/music.h"
#include "tests/plugins/lyraplayer/taggedfiles.h"
#include "tests/support/drawntexts.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <cmath>
#include <memory>

class tst_PlayerWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void timesAreReadByPeople_data();
    void timesAreReadByPeople();
    void softKeysPlayPauseAndEnd();
    void keysStepThroughTheTracks_data();
    void keysStepThroughTheTracks();
    void arrowsChangeTheVolume();
    void digitsSeek();
    void returnLeadsToTheListAndPlaysTheChosenTrack();
    void theLeftSoftKeyIsForTheHighlightedTrackOfTheList();
    void theListIsLeftWithTheRightSoftKey();
    void theHighlightFollowsTheTrackUnlessItWasMoved();
    void theMarkIsOnTheTrackThatPlays();
    void theEndOfTheListShowsTheList();
    void messagesAreShownAndGoWithTheNextKey();
    void aLongMessageStaysInBounds();
    void anEmptyListShowsItsMessageAndNoList();
    void hidingKeepsTheMusicAndShowBringsTheWindowBack();
    void channelMessagesStep();
    void otherMessagesAreIgnored_data();
    void otherMessagesAreIgnored();
    void tapsWorkTheButtons();
    void fullScreenGivesThePageMoreRoom();
    void namesOfAnyLengthAndKindAreShown();
    void twentyThousandTracksAreListed();
    void theListIsDarkAndHasTheTitlesOfTheTags();
    void theCoverIsShown();
    void theCoverChangesWithTheTrack();
    void artistAndAlbumHaveLinesOfTheirOwn();
    void aLongArtistIsNotCutAtAWord();
    void anAbsurdArtistStaysInBounds();
    void noWordsStandOnTheCover();

private:
    struct Fixture {
        explicit Fixture(const Tracks& tracks, bool start = true) : player(silentMpv())
        {
            player.setTracks(tracks);
            window = std::make_unique<PlayerWindow>(player);
            window->show();
            if (start)
                player.play(0);
        }
        bool plays(int track) const
        {
            return player.state() == Player::Playing && player.current() == track;
        }
        QString softKey(int key) const { return window->findChild<ZSoftKey*>()->text(key); }
        const MessageBar& message() const { return *window->findChild<MessageBar*>(); }
        void tap(int x, int y) const
        {
            auto* page = window->findChild<NowPlaying*>();
            QTest::mouseClick(page, Qt::LeftButton, Qt::NoModifier, QPoint(x, y));
        }
        QImage picture() const { return window->grab().toImage(); }

        Player player;
        std::unique_ptr<PlayerWindow> window;
    };

    std::unique_ptr<ScratchFolder> folder_;
    Tracks three_;
};

void tst_PlayerWindow::initTestCase()
{
    folder_ = std::make_unique<ScratchFolder>();
    for (const char* name : {"1.wav", "2.wav", "3.wav"}) {
        folder_->write(name, wav(60));
        three_.append(trackIn(*folder_, name));
    }
    folder_->write("short.wav", wav(0.2));
}

void tst_PlayerWindow::cleanupTestCase()
{
    folder_.reset();
}

void tst_PlayerWindow::timesAreReadByPeople_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << "0:00";
    QTest::newRow("not full") << 59.99 << "0:59";
    QTest::newRow("minute") << 60.0 << "1:00";
    QTest::newRow("long") << 3599.0 << "59:59";
    QTest::newRow("hour") << 3600.0 << "1:00:00";
    QTest::newRow("hours") << 45296.0 << "12:34:56";
    QTest::newRow("absurd") << 1e300 << "99:59:59";
    QTest::newRow("negative") << -5.0 << "0:00";
    QTest::newRow("no number") << std::nan("") << "0:00";
}

void tst_PlayerWindow::timesAreReadByPeople()
{
    QFETCH(double, seconds);
    QFETCH(QString, text);
    QCOMPARE(clockText(seconds), text);
}

void tst_PlayerWindow::softKeysPlayPauseAndEnd()
{
    Fixture f(three_);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    QCOMPARE(f.softKey(ZSoftKey::Left), QString("Pause"));
    QCOMPARE(f.softKey(ZSoftKey::Right), QString("Exit"));
    pressKey(PhoneKey::SoftLeft);
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
    QCOMPARE(f.softKey(ZSoftKey::Left), QString("Play"));
    pressKey(PhoneKey::Music);
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Playing, Patience);
    QVERIFY(!ZApplication::isQuitting());
}

void tst_PlayerWindow::keysStepThroughTheTracks_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("track");
    QTest::newRow("right") << int(PhoneKey::Right) << 2;
    QTest::newRow("left") << int(PhoneKey::Left) << 0;
    QTest::newRow("music next") << int(PhoneKey::MusicNext) << 2;
    QTest::newRow("music previous") << int(PhoneKey::MusicPrevious) << 0;
}

void tst_PlayerWindow::keysStepThroughTheTracks()
{
    QFETCH(int, key);
    QFETCH(int, track);
    for (const bool list : {false, true}) {
        Fixture f(three_, false);
        f.player.play(1);
        f.window->showList(list);
        pressKey(key);
        QTRY_VERIFY_WITH_TIMEOUT(f.plays(track), Patience);
        QCOMPARE(f.window->showsList(), list);
    }
}

void tst_PlayerWindow::arrowsChangeTheVolume()
{
    Fixture f(three_, false);
    pressKey(PhoneKey::Down);
    repeatKey(PhoneKey::Down);
    QCOMPARE(f.player.volume(), 100 - 2 * Player::VolumeStep);
    pressKey(PhoneKey::Up);
    QCOMPARE(f.player.volume(), 100 - Player::VolumeStep);
}

void tst_PlayerWindow::digitsSeek()
{
    Fixture f(three_);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    pressKey(PhoneKey::SoftLeft);
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
    pressKey('5');
    QCOMPARE(f.player.position(), 30.0);
    pressKey('0');
    QCOMPARE(f.player.position(), 0.0);
}

void tst_PlayerWindow::returnLeadsToTheListAndPlaysTheChosenTrack()
{
    Fixture f(three_);
    pressKey(PhoneKey::Return);
    QVERIFY(f.window->showsList());
    QCOMPARE(f.window->list()->currentItem(), 0);
    QCOMPARE(f.window->list()->item(2)->getSubItemText(1, 0), QString("3. 3"));
    const int volume = f.player.volume();
    pressKey(PhoneKey::Down);
    pressKey(PhoneKey::Down);
    QCOMPARE(f.player.volume(), volume);
    pressKey(PhoneKey::Return);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(2), Patience);
    QVERIFY(!f.window->showsList());
}

void tst_PlayerWindow::theLeftSoftKeyIsForTheHighlightedTrackOfTheList()
{
    Fixture f(three_);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    f.window->showList(true);
    QCOMPARE(f.softKey(ZSoftKey::Left), QString("Pause"));
    pressKey(PhoneKey::Down);
    QCOMPARE(f.softKey(ZSoftKey::Left), QString("Play"));
    pressKey(PhoneKey::SoftLeft);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QVERIFY(!f.window->showsList());
    QCOMPARE(f.softKey(ZSoftKey::Left), QString("Pause"));
    f.window->showList(true);
    pressKey(PhoneKey::SoftLeft);
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
    QVERIFY(f.window->showsList());
    QCOMPARE(f.softKey(ZSoftKey::Left), QString("Play"));
    pressKey(PhoneKey::SoftLeft);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QCOMPARE(f.softKey(ZSoftKey::Left), QString("Pause"));
}

void tst_PlayerWindow::theListIsLeftWithTheRightSoftKey()
{
    Fixture f(three_);
    for (const int key : {int(PhoneKey::SoftRight), int(PhoneKey::FolderUp)}) {
        f.window->showList(true);
        QCOMPARE(f.softKey(ZSoftKey::Right), QString("Back"));
        pressKey(key);
        QVERIFY(!f.window->showsList());
        QCOMPARE(f.softKey(ZSoftKey::Right), QString("Exit"));
    }
    QVERIFY(!ZApplication::isQuitting());
}

void tst_PlayerWindow::theHighlightFollowsTheTrackUnlessItWasMoved()
{
    Fixture f(three_);
    f.window->showList(true);
    f.player.next();
    QCOMPARE(f.window->list()->currentItem(), 1);
    pressKey(PhoneKey::Up);
    f.player.next();
    QCOMPARE(f.window->list()->currentItem(), 0);
    // Somebody who comes anew sees where it is.
    f.window->showList(false);
    f.window->showList(true);
    QCOMPARE(f.window->list()->currentItem(), 2);
}

void tst_PlayerWindow::theMarkIsOnTheTrackThatPlays()
{
    Fixture f(three_);
    const auto isMarked = [&f](int row) {
        const QImage mark = f.window->list()->item(row)->pixmap(0).toImage();
        return qAlpha(mark.pixel(mark.width() / 2, mark.height() / 2)) > 0;
    };
    QVERIFY(isMarked(0) && !isMarked(1) && !isMarked(2));
    f.player.next();
    QVERIFY(!isMarked(0) && isMarked(1) && !isMarked(2));
}

void tst_PlayerWindow::theEndOfTheListShowsTheList()
{
    Fixture f({trackIn(*folder_, "short.wav"), trackIn(*folder_, "short.wav")});
    QVERIFY(!f.window->showsList());
    QTRY_VERIFY_WITH_TIMEOUT(f.window->showsList(), Patience);
    QCOMPARE(f.player.state(), Player::Stopped);
    QCOMPARE(f.softKey(ZSoftKey::Left), QString("Play"));
    QVERIFY(f.window->isVisible());
}

void tst_PlayerWindow::messagesAreShownAndGoWithTheNextKey()
{
    Fixture f({"/no/such.mp3", three_.at(0), three_.at(1)});
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QVERIFY(f.message().isVisible());
    QVERIFY(f.message().text().contains("such.mp3"));
    const QImage bar = f.picture().copy(QRect(f.message().pos(), f.message().size()));
    QVERIFY(!boundsOf(bar.copy(0, 0, 24, bar.height()), ZTheme::current().barWarning).isEmpty());
    QVERIFY(boundsOf(bar.copy(24, 0, bar.width() - 24, bar.height()), ZTheme::current().barWarning)
                .isEmpty());
    pressKey(PhoneKey::Right);
    QVERIFY(!f.message().isVisible());
}

void tst_PlayerWindow::aLongMessageStaysInBounds()
{
    Fixture f(three_, false);
    f.player.say(QString(3000, 'm'));
    QTRY_VERIFY_WITH_TIMEOUT(f.message().height() > 40, Patience);
    QVERIFY(f.message().height() < 100);
    QCOMPARE(f.window->size(), QSize(ZScreen::Width, ZScreen::Height));
    QCOMPARE(f.message().width(), ZScreen::Width);
    const QColor ground = ZSkinService::look(ZSkinService::clsDarkListBox).highlight;
    const QRect area(f.message().pos(), f.message().size());
    const QRect ink = inkBounds(f.picture(), area, ground);
    QVERIFY(ink.left() > 2 && ink.right() < ZScreen::Width - 3);
    QVERIFY(ink.top() > area.top() && ink.bottom() < area.bottom());
}

void tst_PlayerWindow::anEmptyListShowsItsMessageAndNoList()
{
    Fixture f({}, false);
    f.player.say("There is no music.");
    QVERIFY(f.message().isVisible());
    for (const int key : {int(PhoneKey::Return), int(PhoneKey::Music), int(PhoneKey::Left),
                          int(PhoneKey::Right), int('5'), int(PhoneKey::SoftLeft)})
        pressKey(key);
    QVERIFY(!f.window->showsList());
    QVERIFY(f.message().isVisible());
    QCOMPARE(f.softKey(ZSoftKey::Left), QString());
    QCOMPARE(f.softKey(ZSoftKey::Right), QString("Exit"));
}

void tst_PlayerWindow::hidingKeepsTheMusicAndShowBringsTheWindowBack()
{
    Fixture f({trackIn(*folder_, "short.wav"), three_.at(0)});
    pressKey(PhoneKey::Hide);
    QVERIFY(f.window->isHidden());
    QVERIFY(!ZScreen::instance()->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QVERIFY(f.window->isHidden());
    f.window->take("show");
    QVERIFY(f.window->isVisible());
    QVERIFY(ZScreen::instance()->isVisible());
    pressKey(PhoneKey::SoftLeft);
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
}

void tst_PlayerWindow::channelMessagesStep()
{
    Fixture f(three_);
    f.window->take("next");
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    f.window->take("next");
    f.window->take("prew");
    f.window->take("prew");
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
}

void tst_PlayerWindow::otherMessagesAreIgnored_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("another spelling") << QByteArray("prev");
    QTest::newRow("capitals") << QByteArray("NEXT");
    QTest::newRow("call") << QByteArray("show()");
    QTest::newRow("zero") << QByteArray("next\0", 5);
    QTest::newRow("long") << QByteArray(4096, 'n');
}

void tst_PlayerWindow::otherMessagesAreIgnored()
{
    QFETCH(QByteArray, message);
    Fixture f(three_, false);
    f.player.play(1);
    f.window->hide();
    f.window->take(message);
    QCOMPARE(f.player.current(), 1);
    QVERIFY(f.window->isHidden());
}

void tst_PlayerWindow::tapsWorkTheButtons()
{
    constexpr int Bar = 197; // the middles of what can be tapped, from the top of the page
    constexpr int Buttons = 237;
    constexpr int Volume = 265;
    Fixture f(three_);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    f.tap(120, Buttons);
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
    f.tap(120, Bar);
    QVERIFY(std::abs(f.player.position() - 30) < 1);
    f.tap(174, Buttons);
    QCOMPARE(f.player.current(), 1);
    f.tap(66, Buttons);
    QCOMPARE(f.player.current(), 0);
    f.tap(60, Volume);
    QCOMPARE(f.player.volume(), 100 - Player::VolumeStep);
    f.tap(180, Volume);
    QCOMPARE(f.player.volume(), 100);
    QVERIFY(!f.window->showsList());
    f.tap(120, 60);
    QVERIFY(f.window->showsList());
}

void tst_PlayerWindow::fullScreenGivesThePageMoreRoom()
{
    Fixture f(three_, false);
    const int before = f.window->findChild<NowPlaying*>()->height();
    pressKey('*');
    QTRY_COMPARE_WITH_TIMEOUT(f.window->findChild<NowPlaying*>()->height(),
                              before + ZSkinService::HeaderHeight, Patience);
}

void tst_PlayerWindow::namesOfAnyLengthAndKindAreShown()
{
    Fixture f({"/" + QByteArray(255, 'W'), "/a\nb\t<b>bold</b>.mp3", "/\xff\xfe.mp3", "/ ",
               "/\xe2\x80\xae"
               "reversed.mp3"},
              false);
    const QColor ground = ZSkinService::look(ZSkinService::clsMainWidget).background;
    for (int track = 0; track < f.player.count(); ++track) {
        f.player.play(track);
        f.window->showList(false);
        const QImage page = f.picture();
        QVERIFY(isPlain(page, QRect(0, 22, 8, 270), ground));
        QVERIFY(isPlain(page, QRect(232, 22, 8, 270), ground));
        f.window->showList(true);
        QCOMPARE(f.picture().size(), page.size());
    }
}

void tst_PlayerWindow::twentyThousandTracksAreListed()
{
    Tracks tracks(20000, three_.at(0));
    Fixture f(tracks, false);
    f.player.play(19999);
    f.window->showList(true);
    QCOMPARE(f.window->list()->count(), 20000);
    QCOMPARE(f.window->list()->currentItem(), 19999);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(19999), Patience);
}

void tst_PlayerWindow::theListIsDarkAndHasTheTitlesOfTheTags()
{
    const ScratchFolder folder;
    folder.write("01 a.mp3", mp3With(id3Text("TIT2", "First Light")));
    folder.write("02 b.mp3", mp3With(QByteArray()));
    Fixture f({trackIn(folder, "01 a.mp3"), trackIn(folder, "02 b.mp3")}, false);
    f.window->showList(true);
    const auto row = [&f](int number) {
        return f.window->list()->item(number)->getSubItemText(1, 0);
    };
    QTRY_COMPARE_WITH_TIMEOUT(row(0), QString("1. First Light"), Patience);
    QCOMPARE(row(1), QString("2. b"));
    const QColor ground = ZSkinService::look(ZSkinService::clsDarkListBox).background;
    QVERIFY(ground.lightness() < 40);
    QCOMPARE(f.picture().pixelColor(120, 240), ground);
}

void tst_PlayerWindow::theCoverIsShown()
{
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(id3Picture(pictureFile({300, 300}, "png", Qt::green))));
    Fixture f({trackIn(folder, "a.mp3")}, false);
    QTRY_VERIFY_WITH_TIMEOUT(!f.window->nowPlaying()->cover().isNull(), Patience);
    const QRect green = boundsOf(f.picture().convertToFormat(QImage::Format_RGB32), Qt::green);
    QVERIFY(green.width() > 80);
    QVERIFY(std::abs(green.width() - green.height()) <= 2);
    QVERIFY(std::abs(green.center().x() - ZScreen::Width / 2) <= 1);
}

void tst_PlayerWindow::theCoverChangesWithTheTrack()
{
    const ScratchFolder folder;
    folder.write("a/a.mp3", mp3With(QByteArray()));
    folder.write("a/cover.png", pictureFile({300, 300}, "png", Qt::green));
    folder.write("b/b.mp3", mp3With(QByteArray()));
    Fixture f({trackIn(folder, "a/a.mp3"), trackIn(folder, "b/b.mp3")}, false);
    QTRY_VERIFY_WITH_TIMEOUT(!f.window->nowPlaying()->cover().isNull(), Patience);
    f.player.play(1);
    QTRY_VERIFY_WITH_TIMEOUT(f.window->nowPlaying()->cover().isNull(), Patience);
}

void tst_PlayerWindow::artistAndAlbumHaveLinesOfTheirOwn()
{
    folder_->write("tagged.wav", wav(60, "Title", "The Sines", "Pure Tones"));
    Fixture f({trackIn(*folder_, "tagged.wav")});
    QTRY_COMPARE_WITH_TIMEOUT(f.window->nowPlaying()->shownLines(),
                              (QStringList{"Title", "The Sines", "Pure Tones"}), Patience);
}

void tst_PlayerWindow::aLongArtistIsNotCutAtAWord()
{
    const QByteArray artist = "The Symphonic Orchestra of the Town by the River";
    folder_->write("tagged.wav", wav(60, "Title", artist));
    Fixture f({trackIn(*folder_, "tagged.wav")});
    QTRY_COMPARE_WITH_TIMEOUT(f.window->nowPlaying()->shownLines().size(), 3, Patience);
    QCOMPARE(f.window->nowPlaying()->shownLines().mid(1).join(' '), QString::fromUtf8(artist));
}

void tst_PlayerWindow::anAbsurdArtistStaysInBounds()
{
    const QByteArray endless = QByteArray("word ").repeated(2000);
    folder_->write("tagged.wav", wav(60, endless, endless, endless));
    Fixture f({trackIn(*folder_, "tagged.wav")});
    QTRY_COMPARE_WITH_TIMEOUT(f.window->nowPlaying()->shownLines().size(), 5, Patience);
    const QColor ground = ZSkinService::look(ZSkinService::clsMainWidget).background;
    const QImage page = f.picture();
    QVERIFY(isPlain(page, QRect(0, 22, 8, 270), ground));
    QVERIFY(isPlain(page, QRect(232, 22, 8, 270), ground));
}

void tst_PlayerWindow::noWordsStandOnTheCover()
{
    const ScratchFolder folder;
    const QByteArray endless = QByteArray("word ").repeated(30);
    folder.write("a.wav", wav(60, endless, endless, endless));
    folder.write("cover.png", pictureFile({300, 300}, "png", Qt::green));
    Fixture f({trackIn(folder, "a.wav")});
    QTRY_VERIFY_WITH_TIMEOUT(!f.window->nowPlaying()->cover().isNull(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(f.window->nowPlaying()->shownLines().size(), 5, Patience);
    const QRect cover = boundsOf(f.picture().convertToFormat(QImage::Format_RGB32), Qt::green);
    QVERIFY(cover.height() > 40);
    const QList<DrawnText> drawn = textsDrawnBy(*f.window);
    QVERIFY(drawn.size() > 8);
    for (const DrawnText& text : drawn)
        QVERIFY2(!text.area.intersects(cover), qPrintable(text.text));
}

QUARN_TEST_MAIN(tst_PlayerWindow)
#include "tst_playerwindow.moc"
