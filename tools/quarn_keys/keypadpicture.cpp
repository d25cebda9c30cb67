#include "tools/quarn_keys/keypadpicture.h"

#include "platform/keymap.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"

#include <QPainter>
#include <QPolygonF>

namespace
{

constexpr int RowHeight = 16;
constexpr int Gap = 3;
constexpr int SideWidth = 56;
constexpr int MiddleWidth = 58;
constexpr int HalfWidth = 26;
constexpr int FirstDigitRow = 4;

/// What stands on a key that has no character.
enum Sign { Line, Triangle, Dot, Letter, LowLine, DoubleTriangle, Skip };
/// Where a sign points.
enum Turn { None = 0, PointsRight = 0, PointsDown = 90, PointsLeft = 180, PointsUp = 270 };

struct DrawnKey {
    int code;
    int left; ///< pixels
    int width;
    int row;
    Sign sign;
    int value; ///< Turn of a sign, or the character of a letter
};

constexpr int MiddleLeft = SideWidth + Gap;
constexpr int RightLeft = MiddleLeft + MiddleWidth + Gap;
constexpr int ArrowWidth = 16;
constexpr int SelectWidth = MiddleWidth - 2 * ArrowWidth - 2 * Gap;

constexpr DrawnKey Keys[] = {
    {PhoneKey::SoftLeft, 0, SideWidth, 0, Line, None},
    {PhoneKey::Up, MiddleLeft, MiddleWidth, 0, Triangle, PointsUp},
    {PhoneKey::SoftRight, RightLeft, SideWidth, 0, Line, None},
    {PhoneKey::Modifier, 0, SideWidth, 1, Letter, 'M'},
    {PhoneKey::Left, MiddleLeft, ArrowWidth, 1, Triangle, PointsLeft},
    {PhoneKey::Return, MiddleLeft + ArrowWidth + Gap, SelectWidth, 1, Dot, None},
    {PhoneKey::Right, RightLeft - Gap - ArrowWidth, ArrowWidth, 1, Triangle, PointsRight},
    {PhoneKey::Clear, RightLeft, SideWidth, 1, Letter, 'C'},
    {PhoneKey::Hide, 0, SideWidth, 2, LowLine, None},
    {PhoneKey::Down, MiddleLeft, MiddleWidth, 2, Triangle, PointsDown},
    {PhoneKey::PageUp, RightLeft, HalfWidth, 2, DoubleTriangle, PointsUp},
    {PhoneKey::PageDown, RightLeft + SideWidth - HalfWidth, HalfWidth, 2, DoubleTriangle,
     PointsDown},
    {PhoneKey::MusicPrevious, 0, SideWidth, 3, Skip, PointsLeft},
    {PhoneKey::Music, MiddleLeft, MiddleWidth, 3, Triangle, PointsRight},
    {PhoneKey::MusicNext, RightLeft, SideWidth, 3, Skip, PointsRight},
};
constexpr char Digits[] = "123456789*0#";

void paintTriangle(QPainter& painter, qreal offset)
{
    constexpr qreal Half = 3.5;
    painter.drawPolygon(
        QPolygonF{{offset - 2.5, -Half}, {offset - 2.5, Half}, {offset + 2.5, 0.0}});
}

void paintLetter(QPainter& painter, QPointF centre, char letter)
{
    constexpr qreal Half = 10;
    painter.drawText(QRectF(centre.x() - Half, centre.y() - Half, 2 * Half, 2 * Half),
                     Qt::AlignCenter, QString(QLatin1Char(letter)));
}

void paintSign(QPainter& painter, QPointF centre, const DrawnKey& key)
{
    if (key.sign == Letter) {
        paintLetter(painter, centre, char(key.value));
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.translate(centre);
    painter.rotate(key.value);
    switch (key.sign) {
    case Line:
        painter.drawRect(QRectF(-7, -1, 14, 2));
        break;
    case LowLine:
        painter.drawRect(QRectF(-5, 2, 10, 2));
        break;
    case Dot:
        painter.drawEllipse(QPointF(), 3.5, 3.5);
        break;
    case Triangle:
        paintTriangle(painter, 0);
        break;
    case DoubleTriangle:
        paintTriangle(painter, -2.5);
        paintTriangle(painter, 2.5);
        break;
    case Skip:
        paintTriangle(painter, -1);
        painter.drawRect(QRectF(2.5, -3.5, 2, 7));
        break;
    case Letter:
        break;
    }
    painter.restore();
}

void paintKey(QPainter& painter, const DrawnKey& key, bool isWanted, bool isGiven)
{
    const ZTheme& theme = ZTheme::current();
    const QRectF place(key.left, key.row * (RowHeight + Gap), key.width, RowHeight);
    const qreal line = isWanted ? 2 : 1;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(isWanted ? theme.mark : theme.outline, line));
    if (isWanted)
        painter.setBrush(theme.highlight);
    else if (isGiven)
        painter.setBrush(theme.hairline);
    painter.drawRoundedRect(place.adjusted(line / 2, line / 2, -line / 2, -line / 2), 2, 2);
    painter.restore();
    painter.setPen(isWanted ? theme.highlightText : isGiven ? theme.text : theme.secondText);
    paintSign(painter, place.center(), key);
}

} // namespace

void KeypadPicture::paint(QPainter& painter, QPoint corner, int wanted, const QList<int>& given)
{
    constexpr int SignSize = 12;
    constexpr int Bold = 75;
    constexpr int Columns = 3;
    constexpr int Lefts[Columns] = {0, MiddleLeft, RightLeft};
    painter.save();
    painter.translate(corner);
    painter.setFont(ZSkinService::font(painter.font().family(), SignSize, Bold));
    for (const DrawnKey& key : Keys)
        paintKey(painter, key, key.code == wanted, given.contains(key.code));
    for (int i = 0; Digits[i] != '\0'; ++i) {
        const int column = i % Columns;
        const DrawnKey key{Digits[i],
                           Lefts[column],
                           column == 1 ? MiddleWidth : SideWidth,
                           FirstDigitRow + i / Columns,
                           Letter,
                           Digits[i]};
        paintKey(painter, key, key.code == wanted, given.contains(key.code));
    }
    painter.restore();
}
