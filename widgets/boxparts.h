#pragma once

#include "platform/zscreen.h"
#include "widgets/boxfont.h"

#include <QRect>
#include <QStringList>

class QPainter;

/// What the boxes in the middle of the screen have in common. All lengths are pixels of the screen.
namespace Box
{

constexpr int Width = 220;
constexpr int Left = (ZScreen::Width - Width) / 2;
constexpr int TextLeft = 5;
constexpr int TextWidth = 210;
constexpr int KeyBarHeight = 15;
constexpr int ProgressHeight = 36;
/// Above what a block holds.
constexpr int Gap = 4;

/// Where a box of that height is.
inline QRect geometry(int height)
{
    return {Left, (ZScreen::Height - height) / 2, Width, height};
}

BoxFont titleFont();
BoxFont textFont();

/// The lines of a text as wide as a box, as many of them as leave it on the screen below a title.
QStringList linesOf(const QString& text, BoxFont& font);
/// How high a block of these lines is.
int blockHeight(const QStringList& lines, const BoxFont& font);

/// Draws the white ground of a block, whose black outline lies inside it.
void drawGround(QPainter& painter, int top, int height);
/// Where a line of a text stands.
QRect lineArea(const BoxFont& font, int top);
/// Draws the lines of a text from `top` on in the painter's pen. Returns where they end.
int drawLines(QPainter& painter, const BoxFont& font, const QStringList& lines, int top, int align);
/// Draws what belongs to the block of a text that ends at `top`: a bar of which so much is filled,
/// 0 to 100, and a line below it.
void drawProgress(QPainter& painter, const BoxFont& font, int top, int percent,
                  const QString& text);
/// Draws the bar at the end of a box, whose words share its width. What is too long for that ends
/// in an ellipsis.
void drawKeyBar(QPainter& painter, const BoxFont& font, int top, const QStringList& words);

} // namespace Box
