#pragma once

#include "platform/zaccessible.h"

#include <QByteArray>
#include <QImage>
#include <QPointF>
#include <QRegion>
#include <QWidget>

#include <memory>

class NarrowWindow;
class QPaintEvent;

/// The window around the screen. It may be larger than the screen, which then sits in its middle.
///
/// If the scale follows the window (ScreenScale), the screen is drawn at the largest one that fits;
/// one that is settled below 1 is drawn likewise. Where that is the toolkit's own, the toolkit
/// draws as ever. Otherwise the screen is drawn at its scale into a picture, which the glass above
/// it shows; the toolkit goes on telling which parts have changed, and the events of the pointer
/// are mapped into the screen's pixels.
class ZScreenFrame : public QWidget, public ZAccessibleSource
{
    Q_OBJECT

public:
    ZScreenFrame();
    ~ZScreenFrame() override;

    /// The screen, a child of the frame, which lives until the frame goes.
    void setContent(QWidget* content);

    /// See ZScreen::setPlace().
    static void setPlace(const QByteArray& place);
    /// See ZScreen::placeOnDisplay().
    QByteArray place() const;

    /// Where a part of a widget in the screen, or of the frame, is seen on the display, and the
    /// point of such a widget that is seen at one of the display; in pixels of the display.
    QRect seenAt(const QWidget& widget, const QRect& part) const;
    QPoint pointSeenAt(const QWidget& widget, QPoint point) const;

    /// To be asked before a widget gets a paint event: whether it must not get it, because it is
    /// drawn at another scale later.
    bool takesOver(const QWidget& widget, const QPaintEvent& event);

    QAccessibleInterface* makeAccessible() override;

signals:
    /// The scale has become another one. It is ScreenScale::density().
    void scaleChanged();
    /// The window manager or the user asks to close the window. It stays open.
    void closeRequested();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    class Glass;
    class Accessible;

    void openFollowing();
    QSize firstPixels(const QSizeF& display) const;
    bool fillsDisplay() const;
    void sizeWindow();
    bool windowResized();
    bool windowExposed();
    void follow(QSize size);
    void arrange();
    bool mapPointer(QEvent* event);
    QPointF toScreen(QPointF point) const;
    bool renderWhole();
    void render(const QRegion& part);
    void presentDirty();
    void paintPicture(QPainter& painter) const;

    QWidget* content_ = nullptr;
    Glass* glass_ = nullptr;               ///< made when it is first needed
    std::unique_ptr<NarrowWindow> narrow_; ///< where the window has no room for the widget
    QSize size_; ///< of the window, in the toolkit's pixels; empty if nothing follows it
    double scale_ = 0;
    bool isMagnified_ = false; ///< drawn at another scale than the toolkit's
    QPoint corner_;            ///< of the magnified screen, in pixels of the display
    QImage image_;             ///< the magnified screen; null if it is to be drawn anew
    QRegion dirty_;            ///< what has changed in it, in the screen's pixels
    bool isRendering_ = false;
    bool isUpdating_ = false;
    bool isMapping_ = false;
    bool isExposing_ = false;
};
