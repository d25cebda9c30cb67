#pragma once

#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/support/keys.h"

#include <QObject>

#include <functional>
#include <memory>

/// What menu items are connected to: writes down which of its slots ran.
class MenuReceiver : public QObject
{
    Q_OBJECT

public:
    QStringList ran;
    std::function<void()> whenRun = [] {};

public slots:
    void first() { run("first"); }
    void second() { run("second"); }
    void withArgument(int /*number*/) { run("with argument"); }

private:
    void run(const char* name)
    {
        ran.append(QString::fromLatin1(name));
        const std::function<void()> copy = whenRun;
        copy();
    }
};

inline std::unique_ptr<ZOptionsMenu> makeMenu(int items = 0)
{
    auto menu =
        std::make_unique<ZOptionsMenu>(QRect(QPoint(0, 0), QPoint(-1, -1)), nullptr, nullptr,
                                       Qt::WindowFlags(), ZSkinService::clsOptionsMenu);
    for (int i = 0; i < items; ++i)
        menu->insertItem(QString("item %1").arg(i), nullptr, {}, true, i, i);
    return menu;
}

inline void pressKeys(const QList<int>& keys)
{
    for (const int key : keys)
        pressKey(key);
}
