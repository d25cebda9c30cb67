#pragma once

#include "platform/zsoftkey.h"
#include "plugins/picview/picturearea.h"
#include "plugins/picview/picturewindow.h"
#include "tests/support/keys.h"

#include <QTest>

/// The viewer on the screen, showing a file.
class Viewer
{
public:
    explicit Viewer(const QString& path) : window(path)
    {
        window.show();
        [this] { QVERIFY(QTest::qWaitFor([this] { return keyReceiver() == &window; })); }();
        awaitPicture();
    }
    void awaitPicture()
    {
        QVERIFY(QTest::qWaitFor([this] { return !window.area()->isLoading(); }));
    }
    void press(int key)
    {
        pressKey(key);
        awaitPicture();
    }
    const PicturePlace& place() const { return window.area()->place(); }
    QString title() const { return window.mainWidgetTitle(); }
    /// What the whole screen shows. Where nothing is painted yet there is no colour of a test's.
    QImage screen()
    {
        QImage image(window.size(), QImage::Format_RGB32);
        image.fill(Qt::magenta);
        window.render(&image);
        return image;
    }
    bool hasBar() const { return window.findChild<ZSoftKey*>()->isVisible(); }
    QImage picture() const
    {
        auto* area = window.area();
        return area->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }

    PictureWindow window;
};
