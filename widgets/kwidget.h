#pragma once

#include "platform/zaccessiblebox.h"
#include "widgets/boxfont.h"

#include <QPixmap>
#include <QRegion>
#include <QTimer>
#include <QWidget>

/// The box of every message, question and progress display: a title bar, wrapped texts, a busy
/// animation and a key bar, composed off-screen and shown in the middle of the screen.
///
/// A box stays until a key closes it, its countdown ends or init() takes it away; a question blocks
/// its caller in an event loop until it is answered. What commands ask of a box is virtual: a box
/// in the place of one of the program's two can tell what they do. All lengths are pixels of the
/// screen.
class kWidget : public QWidget, public ZSpokenBox
{
    Q_OBJECT

public:
    /// How a box is shown and what keys do to it.
    enum Mode {
        Plain = 0,   ///< all keys are swallowed; only the program closes it. Returns 0 at once.
        Message = 1, ///< any key but the arrows closes it. Returns 1 at once.
        /// Returns 1 for yes or 0 for no when it is answered; no when the program ends.
        Question = 2
    };

    kWidget();

    /// Shows a text. `align` is a Qt::Alignment number (4 centred, 1 left); `icon` a path relative
    /// to the work folder, empty for none. "<hr>" in the text draws a rule; nothing else is markup.
    virtual int showText(const QString& title, const QString& text, int align, const QString& icon,
                         int mode);
    /// Shows a busy animation between two texts, each left out when empty. With a mode that is not
    /// 0 a bar offers to cancel.
    virtual int showProcess(const QString& title, const QString& above, int alignAbove,
                            const QString& below, int alignBelow, const QString& icon, int mode);
    /// Lets an animated box close itself after that many ticks of 80 ms. Nothing while none is up.
    void stop(int ticks);
    /// Closes and clears the box.
    virtual void init();
    /// Puts what was composed last on the display before it returns, so that work that does not
    /// come back to the event loop can follow.
    void paintNow();
    /// Schedules paint().
    void repaint();

    /// Set when a key closed the box, until the next one is shown: long work takes it as a request
    /// to stop.
    bool isClosed() const { return closed; }
    /// Whether a box is up, from the call that shows it until init().
    bool isUp() const { return visible; }
    /// Whether a question is open.
    bool isWaiting() const { return waiting; }
    /// The title and the text (of a progress box the one above) of the box shown last.
    QString shownTitle() const { return content_.title; }
    QString shownText() const { return content_.text; }

    ZBoxWords boxWords() const override;
    void chooseAnswer(int answer) override;

public slots:
    void paint();
    void aniUpdate();

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    enum KeyBar { NoKeys = -1, YesNo = 0, Cancel = 1 };

    /// What a box says. It is drawn when it is about to be painted, so that work that shows one
    /// text after the other pays only for those that are seen.
    struct Content {
        QString title;
        QString icon;
        QString text;
        int align = 0;
        bool process = false;
        QString below;
        int alignBelow = 0;
        int keyBar = NoKeys;
    };

    /// What stands between two rules of a text.
    struct Section {
        QString text;
        BoxFont::Lines lines;
        int top = 0;
    };

    int Show(int mode);
    void close(int answer);
    void setContent(const Content& next);
    static QStringList answersOf(int keyBar);
    /// Draws the content if that has not been done; returns the part of the box that is to be
    /// painted, which is never empty.
    QRegion compose();

    // Drawing steps (kwidget_drawing.cpp): each adds a block at `y` and moves `y` to its end.
    void drawAll();
    QRegion redrawLines();
    QRegion drawChangedLines(const QList<Section>& next);
    QList<Section> sectionsOf(const QString& text);
    void drawTitle(const QString& title, const QString& icon);
    void drawText(const QString& text, int align);
    void drawAniIcon();
    void drawSoftKeys(int kind);
    QRect lineRect(const Section& section, qsizetype line) const;
    void reserve(int height);
    static QString framePath(int frame);
    QRect frameRect() const;

    QPixmap canvas;
    QPixmap aniFrame;
    QTimer* aniTimer;
    QTimer* showTimer_;
    QTimer* paintTimer_;
    BoxFont titleFont_;
    BoxFont textFont_;
    QPixmap titleIcon_; ///< of the title on the canvas, so that it is not read for each progress
    bool closed = false;
    bool visible = false;
    int y = 0;
    int aniY = 0;
    int frameNo = 0;
    int countdown = 0;
    bool waiting = false;
    bool result = false;
    Content content_;  ///< to be shown
    Content composed_; ///< on the canvas
    bool stale_ = true;
    int titleBottom_ = 0;
    QList<Section> sections_; ///< of the text on the canvas
};

/// The box of messages and questions, and the box of progress. Made by the main window.
extern kWidget* textView;
extern kWidget* processView;
