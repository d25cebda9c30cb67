#include "plugins/lyraplayer/playerwindow.h"

#include "platform/keymap.h"
#include "platform/screenscale.h"
#include "platform/zlistbox.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "plugins/lyraplayer/glyphs.h"
#include "plugins/lyraplayer/messagebar.h"
#include "plugins/lyraplayer/nowplaying.h"
#include "plugins/lyraplayer/player.h"
#include "plugins/lyraplayer/tracknames.h"
#include "plugins/lyraplayer/trackreader.h"
#include "plugins/support/plugintexts.h"

#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <cmath>

namespace
{

constexpr int MarkSize = 14;
/// As dark as the page of the track that plays.
constexpr unsigned ListClass = ZSkinService::clsDarkListBox;

QPixmap emptyMark(double density)
{
    const int pixels = int(std::ceil(MarkSize * density));
    QPixmap mark(pixels, pixels);
    mark.setDevicePixelRatio(density);
    mark.fill(Qt::transparent);
    return mark;
}

QPixmap playMark(double density)
{
    QPixmap mark = emptyMark(density);
    QPainter painter(&mark);
    Glyph::play(painter, QRectF(2, 2, MarkSize - 4, MarkSize - 4),
                ZSkinService::look(ListClass).text);
    return mark;
}

} // namespace

PlayerWindow::PlayerWindow(Player& player)
    : PluginWindow(QStringLiteral("LyraPlayer")),
      player_(player),
      reader_(new TrackReader(this)),
      noMark_(emptyMark(ScreenScale::canvasDensity())),
      mark_(playMark(ScreenScale::canvasDensity()))
{
    addPages();
    fillList();
    connectPlayer();
    showList(false);
    showState();
    connect(ZScreen::instance(), &ZScreen::densityChanged, this, &PlayerWindow::drawMarks);
}

PlayerWindow::~PlayerWindow() = default;

void PlayerWindow::addPages()
{
    pages_ = new QStackedWidget(this);
    nowPlaying_ = new NowPlaying(player_, pages_);
    list_ = new ZListBox(QStringLiteral("%I%M"), pages_, 0, ListClass);
    list_->setItemFont(2, font(), false);
    list_->setItemFont(2, font(), true);
    pages_->addWidget(nowPlaying_);
    pages_->addWidget(list_);
    message_ = new MessageBar(this);
    contentLayout()->addWidget(pages_, 1);
    contentLayout()->addWidget(message_);
}

void PlayerWindow::connectPlayer()
{
    connect(reader_, &TrackReader::titleRead, this, &PlayerWindow::titleRead);
    connect(reader_, &TrackReader::coverRead, nowPlaying_, &NowPlaying::setCover);
    connect(nowPlaying_, &NowPlaying::listWanted, this, [this] { showList(true); });
    connect(list_, &ZListBox::selected, this, &PlayerWindow::playRow);
    connect(list_, &ZListBox::highlighted, this, &PlayerWindow::showState);
    connect(&player_, &Player::changed, this, &PlayerWindow::showState);
    connect(&player_, &Player::currentChanged, this, &PlayerWindow::follow);
    connect(&player_, &Player::listEnded, this, [this] { showList(true); });
}

void PlayerWindow::fillList()
{
    // Rows are made when they are seen; only then their tags are read.
    list_->appendLater(player_.count(), 1, QSize(MarkSize, MarkSize),
                       [this](int track) { return rowOf(track); });
    list_->setCurrentItem(player_.current());
    follow(player_.current(), -1);
}

ZListBoxItem* PlayerWindow::rowOf(int track)
{
    auto* row = new ZListBoxItem(list_, QStringLiteral("%I%M"));
    row->setPixmap(0, track == player_.current() ? mark_ : noMark_);
    row->appendSubItem(1, trackRow(QString(), player_.tracks(), track), false);
    reader_->askTitle(track, player_.trackAt(track));
    return row;
}

void PlayerWindow::drawMarks()
{
    noMark_ = emptyMark(ScreenScale::canvasDensity());
    mark_ = playMark(ScreenScale::canvasDensity());
    if (ZListBoxItem* row = list_->item(player_.current()))
        row->setPixmap(0, mark_);
}

void PlayerWindow::titleRead(int track, const QString& title)
{
    if (ZListBoxItem* row = list_->item(track))
        row->setSubItemText(1, 0, trackRow(title, player_.tracks(), track));
}

void PlayerWindow::follow(int track, int before)
{
    if (ZListBoxItem* row = list_->item(before))
        row->setPixmap(0, noMark_);
    if (ZListBoxItem* row = list_->item(track))
        row->setPixmap(0, mark_);
    if (!showsList() || list_->currentItem() == before)
        list_->setCurrentItem(track);
    // Until it has come the last one stays, which mostly is the same.
    if (track >= 0)
        reader_->askCover(player_.trackAt(track), nowPlaying_->coverBox());
}

void PlayerWindow::showList(bool list)
{
    if (list && player_.count() == 0)
        return;
    if (list && !showsList())
        list_->setCurrentItem(player_.current());
    pages_->setCurrentIndex(list ? 1 : 0);
    if (list)
        list_->setFocus();
    else
        setFocus();
    showState();
}

bool PlayerWindow::showsList() const
{
    return pages_->currentIndex() == 1;
}

void PlayerWindow::showState()
{
    const bool pauses = player_.isPlaying() && !isOnAnotherTrack();
    const QString left = player_.count() == 0 ? QString()
                         : pauses             ? pluginTexts().pause
                                              : pluginTexts().play;
    setSoftKeyTexts(left, showsList() ? pluginTexts().back : pluginTexts().exit);
    message_->setText(player_.message());
}

void PlayerWindow::playRow(int row)
{
    player_.play(row);
    showList(false);
}

bool PlayerWindow::isOnAnotherTrack() const
{
    return showsList() && list_->currentItem() != player_.current();
}

void PlayerWindow::leftSoftKey()
{
    if (isOnAnotherTrack())
        playRow(list_->currentItem());
    else
        player_.toggle();
}

void PlayerWindow::rightSoftKey()
{
    if (showsList())
        showList(false);
    else
        end();
}

void PlayerWindow::keyPressed(int code)
{
    constexpr double Tenths = 10;
    switch (code) {
    case PhoneKey::Music:
        return player_.toggle();
    case PhoneKey::Left:
    case PhoneKey::MusicPrevious:
        return player_.previous();
    case PhoneKey::Right:
    case PhoneKey::MusicNext:
        return player_.next();
    case PhoneKey::Up:
        return player_.changeVolume(1);
    case PhoneKey::Down:
        return player_.changeVolume(-1);
    case PhoneKey::Return:
    case PhoneKey::Enter:
        return showList(true);
    case PhoneKey::FolderUp:
        return showList(false);
    case PhoneKey::Hide:
        return hide();
    default:
        if (code >= '0' && code <= '9')
            player_.seek((code - '0') / Tenths);
        else
            PluginWindow::keyPressed(code);
    }
}

void PlayerWindow::take(const QByteArray& message)
{
    if (message == "next") {
        player_.next();
    } else if (message == "prew") {
        player_.previous();
    } else if (message == "show") {
        show();
        ZScreen::instance()->raiseWindow();
    }
}

void PlayerWindow::showEvent(QShowEvent* event)
{
    PluginWindow::showEvent(event);
    player_.setWatched(true);
}

void PlayerWindow::hideEvent(QHideEvent* event)
{
    PluginWindow::hideEvent(event);
    player_.setWatched(false);
}
