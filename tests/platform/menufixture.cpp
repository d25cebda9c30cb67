#include "tests/platform/menufixture.h"

#include "platform/zskinservice.h"
#include "tests/support/keys.h"

void MenuReceiver::run(const char* name)
{
    ran.append(QString::fromLatin1(name));
    const std::function<void()> copy = whenRun;
    copy();
}

std::unique_ptr<ZOptionsMenu> makeMenu(int items)
{
    auto menu =
        std::make_unique<ZOptionsMenu>(QRect(QPoint(0, 0), QPoint(-1, -1)), nullptr, nullptr,
                                       Qt::WindowFlags(), ZSkinService::clsOptionsMenu);
    for (int i = 0; i < items; ++i)
        menu->insertItem(QString("item %1").arg(i), nullptr, {}, true, i, i);
    return menu;
}

void pressKeys(const QList<int>& keys)
{
    for (const int key : keys)
        pressKey(key);
}
