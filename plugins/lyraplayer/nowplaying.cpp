#include "plugins/lyraplayer/nowplaying.h"

#include "platform/shownname.h"
#include "platform/zskinservice.h"
#include "plugins/lyraplayer/glyphs.h"
#include "plugins/lyraplayer/player.h"
#include "plugins/support/plugintexts.h"

#include <QMouseEvent>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace
{

constexpr int Margin = 10;
constexpr int SmallText = 12;
constexpr int Text = 14;
constexpr int LargeText = 17;
constexpr int Bold = 75;
constexpr int Light = 25;
constexpr int LargestPicture = 96;

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

/// Draws a text on at most two lines, cut off at the end if it needs more.
void paintTwoLines(QPainter& painter, const QRect& area, const QString& text)
{
    QTextLayout layout(withMarks(text).simplified(), painter.font());
    layout.beginLayout();
    QTextLine first = layout.createLine();
    first.setLineWidth(area.width());
    layout.endLayout();
    const qsizetype end = first.isValid() ? first.textLength() : 0;
    const QString head = layout.text().left(end);
    const QString rest = oneLine(painter, layout.text().mid(end), area.width());
    const int height = painter.fontMetrics().height();
    const int align = int(Qt::AlignHCenter | Qt::AlignVCenter) | Qt::TextSingleLine;
    QRect line(area.left(), area.top(), area.width(), height);
    if (rest.isEmpty())
        line.moveTop(area.top() + (area.height() - height) / 2);
    painter.drawText(line, align, oneLine(painter, head, area.width()));
    painter.drawText(line.translated(0, height), align, rest);
}

/// The part of a bar that is filled.
void paintBar(QPainter& painter, const QRect& bar, double part)
{
    painter.fillRect(bar, skin().border);
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

NowPlaying::Places NowPlaying::places() const
{
    constexpr int ButtonSize = 30;
    constexpr int ButtonGap = 54;
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
    place.artist = takeLow(18, 8);
    place.title = takeLow(44, 0);
    place.head = QRect(Margin, 4, inner, 16);
    const int top = place.head.bottom() + 5;
    const int side = std::clamp(place.title.top() - 5 - top, 0, LargestPicture);
    place.picture =
        QRect((width() - side) / 2, top + (place.title.top() - 5 - top - side) / 2, side, side);
    place.play = QRect((width() - ButtonSize) / 2, buttons.top(), ButtonSize, ButtonSize);
    place.back = place.play.translated(-ButtonGap, 0);
    place.forth = place.play.translated(ButtonGap, 0);
    return place;
}

void NowPlaying::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), skin().background);
    const Places place = places();
    paintHead(painter, place.head);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(skin().highlight);
    painter.drawRoundedRect(place.picture, 8, 8);
    painter.setRenderHint(QPainter::Antialiasing, false);
    const int inset = place.picture.width() / 6;
    Glyph::note(painter, place.picture.adjusted(inset, inset, -inset, -inset), Qt::black);
    paintTexts(painter, place);
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

void NowPlaying::paintTexts(QPainter& painter, const Places& place) const
{
    painter.setFont(ZSkinService::font(font().family(), LargeText, Bold));
    painter.setPen(skin().text);
    paintTwoLines(painter, place.title,
                  player_.count() > 0 ? player_.title() : pluginTexts().noMusic);
    const TrackInfo& track = player_.track();
    QStringList known{track.artist, track.album};
    known.removeAll(QString());
    painter.setFont(ZSkinService::font(font().family(), Text, Light));
    painter.setPen(skin().secondaryText);
    painter.drawText(
        place.artist, Qt::AlignCenter,
        oneLine(painter, known.join(QStringLiteral(" \u2013 ")), place.artist.width()));
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
    const Places place = places();
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
