#include "platform/narrowwindow.h"

#include <QPainter>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace
{

/// Changes an attribute as long as the toolkit thinks that the widget is not there: else it would
/// hide the window and show it again.
void setQuietly(QWidget& widget, Qt::WidgetAttribute attribute, bool isOn)
{
    const bool isVisible = widget.testAttribute(Qt::WA_WState_Visible);
    widget.setAttribute(Qt::WA_WState_Visible, false);
    widget.setAttribute(attribute, isOn);
    widget.setAttribute(Qt::WA_WState_Visible, isVisible);
}

} // namespace

NarrowWindow::NarrowWindow(QWidget* widget, Paint paint)
    : widget_(widget), paint_(std::move(paint)), store_(widget->windowHandle())
{
}

bool NarrowWindow::withoutHandingOver(const std::function<bool()>& work) const
{
    setQuietly(*widget_, Qt::WA_DontShowOnScreen, true);
    const bool isDone = work();
    setQuietly(*widget_, Qt::WA_DontShowOnScreen, false);
    return isDone;
}

void NarrowWindow::presentAll()
{
    present(QRect(QPoint(), store_.window()->size()));
}

void NarrowWindow::present(const QRegion& part)
{
    const QRect all(QPoint(), store_.window()->size());
    if (!store_.window()->isExposed() || all.isEmpty())
        return;
    const QRegion seen = store_.size() == all.size() ? part & all : QRegion(all);
    if (store_.size() != all.size())
        store_.resize(all.size());
    if (seen.isEmpty())
        return;
    store_.beginPaint(seen);
    QPainter painter(store_.paintDevice());
    painter.setClipRegion(seen);
    paint_(painter);
    painter.end();
    store_.endPaint();
    store_.flush(seen);
}
