#include "platform/zapplication.h"
#include "platform/zlistbox.h"
#include "platform/zmainwidget.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QVBoxLayout>

/// A window with a title and a list of one row; closing it ends the program.
int main(int argc, char** argv)
{
    ZApplication application(argc, argv, ZApplication::GuiClient);
    ZMainWidget window(ZMainWidget::TitleUnderlined, nullptr, "window", {});
    window.setMainWidgetTitle(QStringLiteral("Example"));
    auto* list = new ZListBox(QStringLiteral("%M"), &window, 0, ZSkinService::clsListBox);
    auto* row = new ZListBoxItem(list, QStringLiteral("%M"));
    row->appendSubItem(1, QStringLiteral("Hello"), false);
    list->insertItem(row);
    window.contentLayout()->addWidget(list);
    window.show();
    QObject::connect(ZScreen::instance(), &ZScreen::closeRequested, &ZApplication::quit);
    return application.exec();
}
