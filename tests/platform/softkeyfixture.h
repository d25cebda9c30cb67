#pragma once

#include "platform/zsoftkey.h"
#include "tests/support/mainwidget.h"

#include <QEvent>
#include <QWidget>

#include <memory>

/// A soft-key bar at its place in a main widget that is shown.
struct SoftKeyFixture {
    SoftKeyFixture() : main(showMainWidget()), bar(new ZSoftKey(QString(), main.get(), main.get()))
    {
        bar->setGeometry(0, 300, 240, 20);
        bar->show();
    }

    std::unique_ptr<QWidget> main;
    ZSoftKey* bar; ///< the main widget's
};

/// Counts how often a widget is painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};
