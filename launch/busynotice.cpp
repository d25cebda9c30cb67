#include "launch/busynotice.h"

#include "lang/texts.h"
#include "widgets/kwidget.h"

void showBusy(const QString& above)
{
    processView->showProcess(QStringLiteral("Processing.."), above,
                             above.isEmpty() ? 0 : Qt::AlignHCenter, LANG_PLEASE_WAIT,
                             Qt::AlignHCenter, QStringLiteral("res/img/open_with.png"),
                             kWidget::Plain);
}
