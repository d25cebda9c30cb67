#include "tests/support/mainwidget.h"

#include "platform/zscreen.h"

#include <QWidget>

std::unique_ptr<QWidget> showMainWidget()
{
    auto main = std::make_unique<QWidget>(ZScreen::instance());
    ZScreen::instance()->place(main.get(), ZScreen::Layer::Main);
    main->resize(ZScreen::Width, ZScreen::Height);
    main->show();
    return main;
}
