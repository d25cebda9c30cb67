#pragma once

#include "lang/texts.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "shell/settings.h"
#include "tests/support/later.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "widgets/kwidget.h"

#include <QColor>
#include <QFontMetrics>
#include <QTest>

// What the tests of boxes share.

constexpr int FrameWidth = 30;
constexpr int FrameHeight = 20;

/// The colour of a frame of the animation.
inline QColor frameColour(int frame)
{
    return QColor(255, 30 * frame, 0);
}

/// The work folder's texts, "icon.png" and the frames of the animation.
inline void stageBoxes(const ScratchFolder& folder)
{
    loadTexts(QString());
    work_folder = folder.path() + QLatin1Char('/');
    folder.write("icon.png", plainPng(40, 26, Qt::green));
    for (int frame = 0; frame < 8; ++frame) {
        folder.write(QStringLiteral("res/img/process/%1.png").arg(frame),
                     plainPng(FrameWidth, FrameHeight, frameColour(frame)));
    }
}

/// Whether a box is on the screen and gets the keys.
inline bool hasKeys(const kWidget& box)
{
    return box.isVisible() && ZScreen::instance()->active() == &box;
}

/// Waits until that is so.
inline void awaitKeys(const kWidget& box)
{
    QVERIFY(QTest::qWaitFor([&box] { return hasKeys(box); }));
}

/// What the box looks like once it is on the screen.
inline QImage pictureOf(kWidget& box)
{
    [&box] { QVERIFY(QTest::qWaitFor([&box] { return box.isVisible(); })); }();
    return box.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// Asks a question and acts as soon as it can be answered. Returns the answer.
inline int askAnd(kWidget& box, const std::function<void()>& action,
                  const QString& text = QStringLiteral("Sure?"))
{
    once([&box] { return box.isWaiting() && hasKeys(box); }, action);
    return box.showText(QStringLiteral("Question"), text, 4, QString(), kWidget::Question);
}

/// Whether two boxes look alike, whichever frame their animations have got to.
inline bool looksLike(kWidget& box, kWidget& expected)
{
    const QImage picture = pictureOf(box);
    for (int frame = 0; frame < 8; ++frame) {
        if (picture == pictureOf(expected))
            return true;
        expected.aniUpdate();
    }
    return false;
}

inline QFont titleFont()
{
    return ZSkinService::font(QStringLiteral("ZarnikFont"), 15, 87);
}

inline QFont textFont()
{
    return ZSkinService::font(QStringLiteral("ZarnikFont"), 13, 25);
}

/// Pixels from line to line.
inline int pitchOf(const QFont& font)
{
    return QFontMetrics(font).height() + 4;
}

/// The height of a title or text of that many lines.
inline int blockHeight(const QFont& font, int lines = 1)
{
    return lines * pitchOf(font) + 4;
}

/// The timer that drives the animation: 80 ms. nullptr if it does not run.
inline QTimer* animationTimer(const kWidget& box)
{
    for (QTimer* timer : box.findChildren<QTimer*>()) {
        if (timer->interval() == 80 && timer->isActive())
            return timer;
    }
    return nullptr;
}

/// Keeps the animation of a box from going on by itself, so that a test can count the ticks.
class TicksHeldBack : public QObject
{
public:
    explicit TicksHeldBack(const kWidget& box)
    {
        for (QTimer* timer : box.findChildren<QTimer*>()) {
            if (timer->interval() == 80)
                timer->installEventFilter(this);
        }
    }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        return event->type() == QEvent::Timer;
    }
};
