#include "widgets/errorbox.h"

#include "lang/texts.h"
#include "widgets/kwidget.h"

void showError(const QString& text)
{
    textView->showText(LANG_ERROR, text, Qt::AlignHCenter, QStringLiteral("res/img/error.png"),
                       kWidget::Message);
}
