#pragma once

#include "widgets/boxfont.h"

#include <QPixmap>
#include <QStringList>
#include <QWidget>

class QMouseEvent;
class QPainter;

/// What boxes in the middle of the screen are begun with: a title, below a picture if it has one,
/// and a text below that. A class of its own makes a box of it: it draws what stands below the
/// text, and answers keys and taps. Everything below the box on the screen is inert while it is
/// shown. All lengths are pixels of the screen.
class BoxFrame : public QWidget
{
protected:
    /// Hidden, and without a text.
    explicit BoxFrame(const QString& title);

    /// What stands above the title. A null one is none.
    void setIcon(const QPixmap& icon) { icon_ = icon; }
    /// Breaks a text into lines, as many as have room on the screen.
    void setText(const QString& text);
    /// A text whose lines are settled. What is too long for one is cut.
    void setLines(const QStringList& lines) { lines_ = lines; }

    const QStringList& titleLines() const { return title_; }
    const QStringList& lines() const { return lines_; }
    const BoxFont& textFont() const { return textFont_; }

    /// Where the text ends, from the top of the box.
    int textEnd() const;
    /// Moves the box to the middle of the screen, with so much room below its text.
    void fit(int roomBelow);
    /// Draws the ground of the whole box, its picture, title and text.
    void drawUpToText(QPainter& painter) const;
    /// Whether the pointer is where a finger that means the key bar at the end of the box may be.
    bool isAtKeyBar(const QMouseEvent& event) const;

private:
    int titleEnd() const;

    QPixmap icon_;
    BoxFont titleFont_;
    BoxFont textFont_;
    QStringList title_; ///< lines
    QStringList lines_; ///< of the text
};
