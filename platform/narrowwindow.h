#pragma once

#include <QBackingStore>
#include <QRegion>

#include <functional>

class QPainter;
class QWidget;
class QWindow;

/// Shows a picture in a window that is smaller than its widget.
///
/// The toolkit hands over pictures of the widget's size. A server of X shows what the window has
/// room for, a compositor of Wayland takes the window to be as large as the picture. So what is
/// shown is handed over here, at the window's size, and what the toolkit has drawn is not.
class NarrowWindow
{
public:
    /// Paints the window; clipped to what is to be painted.
    using Paint = std::function<void(QPainter& painter)>;

    /// `widget` owns the window, which it must have, and outlives this.
    NarrowWindow(QWidget* widget, Paint paint);

    /// Lets the toolkit do `work`, and hand over no picture meanwhile.
    bool withoutHandingOver(const std::function<bool()>& work) const;
    /// Paints a part of the window, in the toolkit's pixels; all of it if its size is new. Nothing
    /// while the window cannot be seen.
    void present(const QRegion& part);
    void presentAll();

private:
    QWidget* widget_;
    Paint paint_;
    QBackingStore store_;
};
