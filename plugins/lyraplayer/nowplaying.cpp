#include "plugins/lyraplayer/nowplaying.h"

#include "platform/screenscale.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"
#include "plugins/lyraplayer/glyphs.h"
#include "plugins/lyraplayer/player.h"
#include "plugins/support/brokenlines.h"
#include "plugins/support/plugintexts.h"

#include <QMouseEvent>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace
{

constexpr int Margin = 10;
constexpr int SmallText = 12;
constexpr int MiddleText = 14;
constexpr int LargeText = 17;
constexpr int Bold = 75;
constexpr int Light = 25;
constexpr int LargestPicture = 128;
/// A note that is much larger than this would be all that one sees.
constexpr int LargestNote = 88;
constexpr int Corner = 6;

const ZSkinService::Look& skin()
{
    return ZSkinService::look(ZSkinService::clsMainWidget);
}

QString stateText(const Player& player)
{
    if (player.count() == 0)
        return QString();
    switch (player.state()) {
    case Player::Opening:
        return pluginTexts().opening;
    case Player::Playing:
        return pluginTexts().playing;
    case Player::Paused:
        return pluginTexts().paused;
    default:
        return pluginTexts().stopped;
    }
}

QString oneLine(const QPainter& painter, const QString& text, int width)
{
    return painter.fontMetrics().elidedText(text.simplified(), Qt::ElideRight, width);
}

/// The part of a bar that is filled.
void paintBar(QPainter& painter, const QRect& bar, double part)
{
    painter.fillRect(bar, ZTheme::current().barTrack);
    QRect filled = bar;
    filled.setWidth(int(std::lround(bar.width() * std::clamp(part, 0.0, 1.0))));
    painter.fillRect(filled, skin().highlight);
}

} // namespace

QString clockText(double seconds)
{
    // What a broken file claims may be anything.
    constexpr double Longest = 359999;
    const int whole = int(std::clamp(std::isfinite(seconds) ? seconds : 0.0, 0.0, Longest));
    const QString rest = QStringLiteral(":%1").arg(whole % 60, 2, 10, QLatin1Char('0'));
    if (whole < 3600)
        return QString::number(whole / 60) + rest;
    return QStringLiteral("%1:%2").arg(whole / 3600).arg(whole / 60 % 60, 2, 10, QLatin1Char('0')) +
           rest;
}

NowPlaying::NowPlaying(Player& player, QWidget* parent) : QWidget(parent), player_(player)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(&player, &Player::changed, this, qOverload<>(&QWidget::update));
}

int NowPlaying::Text::height() const
{
    return int(lines.size()) * QFontMetrics(font).height();
}

void NowPlaying::setCover(const QImage& cover)
{
    cover_ = cover;
    update();
}

QStringList NowPlaying::shownLines() const
{
    QStringList lines;
    for (const Text& text : texts())
        lines += text.lines;
    return lines;
}

QSize NowPlaying::coverBox() const
{
    return QSize(LargestPicture, LargestPicture) * ScreenScale::density();
}

QList<NowPlaying::Text> NowPlaying::texts() const
{
    const int inner = width() - 2 * Margin;
    const auto text = [inner, this](const QString& words, int size, int weight,
                                    const QColor& colour, int most) {
        const QFont itsFont = ZSkinService::font(font().family(), size, weight);
        return Text{brokenLines(words, itsFont, inner, most), itsFont, colour};
    };
    const TrackInfo& track = player_.track();
    const QString title = player_.count() > 0 ? player_.title() : pluginTexts().noMusic;
    return {text(title, LargeText, Bold, skin().text, 2),
            text(track.artist, MiddleText, Light, skin().text, 2),
            text(track.album, SmallText, Light, skin().secondaryText, 1)};
}

NowPlaying::Places NowPlaying::places(const QList<Text>& texts) const
{
    constexpr int ButtonSize = 30;
    constexpr int ButtonGap = 54;
    constexpr int Gap = 6;
    const int inner = width() - 2 * Margin;
    Places place;
    int bottom = height() - 4;
    const auto takeLow = [&bottom, inner](int height, int gap) {
        bottom -= height + gap;
        return QRect(Margin, bottom, inner, height);
    };
    place.volume = takeLow(14, 4);
    const QRect buttons = takeLow(ButtonSize, 6);
    place.times = takeLow(16, 4);
    place.bar = takeLow(6, 2);
    int textHeight = 0;
    for (const Text& text : texts)
        textHeight += text.height();
    place.texts = takeLow(textHeight, 8);
    place.head = QRect(Margin, 4, inner, 16);
    const int top = place.head.bottom() + Gap;
    const int room = place.texts.top() - Gap - top;
    const int side = std::clamp(room, 0, cover_.isNull() ? LargestNote : LargestPicture);
    place.picture = QRect((width() - side) / 2, top + (room - side) / 2, side, side);
    place.play = QRect((width() - ButtonSize) / 2, buttons.top(), ButtonSize, ButtonSize);
    place.back = place.play.translated(-ButtonGap, 0);
    place.forth = place.play.translated(ButtonGap, 0);
    return place;
}

void NowPlaying::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), skin().background);
    const QList<Text> shown = texts();
    const Places place = places(shown);
    paintHead(painter, place.head);
    paintPicture(painter, place.picture);
    paintTexts(painter, place.texts, shown);
    paintProgress(painter, place);
    Glyph::previous(painter, place.back.adjusted(5, 5, -5, -5), skin().text);
    const QRect middle = place.play.adjusted(2, 2, -2, -2);
    if (player_.isPlaying())
        Glyph::pause(painter, middle, skin().text);
    else
        Glyph::play(painter, middle, skin().text);
    Glyph::next(painter, place.forth.adjusted(5, 5, -5, -5), skin().text);
    paintVolume(painter, place.volume);
}

void NowPlaying::paintPicture(QPainter& painter, const QRect& area) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (cover_.isNull()) {
        painter.setBrush(skin().highlight);
        painter.drawRoundedRect(area, Corner, Corner);
        painter.restore();
        const int inset = area.width() / 6;
        Glyph::note(painter, area.adjusted(inset, inset, -inset, -inset), Qt::black);
        return;
    }
    QRectF place(QPointF(), QSizeF(cover_.size()).scaled(area.size(), Qt::KeepAspectRatio));
    place.moveCenter(QRectF(area).center());
    // As many pixels as there is room for, so that it is sharp.
    const QSize pixels = (place.size() * ScreenScale::density()).toSize().expandedTo(QSize(1, 1));
    QBrush brush(cover_.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    brush.setTransform(QTransform::fromTranslate(place.left(), place.top())
                           .scale(1 / ScreenScale::density(), 1 / ScreenScale::density()));
    painter.setBrush(brush);
    painter.drawRoundedRect(place, Corner, Corner);
    painter.restore();
}

void NowPlaying::paintHead(QPainter& painter, const QRect& area) const
{
    painter.setFont(ZSkinService::font(font().family(), SmallText, Light));
    painter.setPen(skin().secondaryText);
    // Each has a third of the line.
    const int room = area.width() / 3;
    painter.drawText(area, int(Qt::AlignLeft | Qt::AlignVCenter),
                     oneLine(painter, stateText(player_), room));
    if (player_.count() == 0)
        return;
    painter.drawText(area, int(Qt::AlignRight | Qt::AlignVCenter),
                     QStringLiteral("%1 / %2").arg(player_.current() + 1).arg(player_.count()));
    painter.setPen(skin().disabledText);
    painter.drawText(area, Qt::AlignCenter, oneLine(painter, pluginTexts().okForList, room));
}

void NowPlaying::paintTexts(QPainter& painter, const QRect& area, const QList<Text>& texts)
{
    QRect rest = area;
    for (const Text& text : texts) {
        painter.setFont(text.font);
        painter.setPen(text.colour);
        rest.setTop(paintLines(painter, rest, text.lines));
    }
}

void NowPlaying::paintProgress(QPainter& painter, const Places& place) const
{
    const double length = player_.track().length;
    paintBar(painter, place.bar, length > 0 ? player_.position() / length : 0);
    painter.setFont(ZSkinService::font(font().family(), SmallText, Light));
    painter.setPen(skin().text);
    painter.drawText(place.times, int(Qt::AlignLeft | Qt::AlignVCenter),
                     clockText(player_.position()));
    painter.drawText(place.times, int(Qt::AlignRight | Qt::AlignVCenter),
                     length > 0 ? clockText(length) : QStringLiteral("-:--"));
}

void NowPlaying::paintVolume(QPainter& painter, const QRect& area) const
{
    constexpr int NumberWidth = 40;
    Glyph::speaker(painter, QRect(area.left(), area.top(), area.height(), area.height()),
                   skin().secondaryText);
    const int left = area.left() + area.height() + 6;
    paintBar(painter, QRect(left, area.center().y() - 1, area.right() - NumberWidth - left, 3),
             player_.volume() / 100.0);
    painter.setFont(ZSkinService::font(font().family(), SmallText, Light));
    painter.setPen(skin().secondaryText);
    painter.drawText(area, int(Qt::AlignRight | Qt::AlignVCenter),
                     QStringLiteral("%1 %").arg(player_.volume()));
}

void NowPlaying::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    const QPoint point = event->position().toPoint();
    const Places place = places(texts());
    // A finger is larger than what it is meant for.
    const auto hits = [point](const QRect& area) {
        constexpr int Slack = 8;
        return area.adjusted(-Slack, -Slack / 2, Slack, Slack / 2).contains(point);
    };
    if (hits(place.play))
        player_.toggle();
    else if (hits(place.back))
        player_.previous();
    else if (hits(place.forth))
        player_.next();
    else if (hits(place.volume))
        player_.changeVolume(point.x() < width() / 2 ? -1 : 1);
    else if (hits(place.bar) || hits(place.times))
        player_.seek(double(point.x() - place.bar.left()) / place.bar.width());
    else if (point.y() < place.bar.top())
        emit listWanted();
}
