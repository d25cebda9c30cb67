#include "platform/zmultilineedit.h"

ZMultiLineEdit::ZMultiLineEdit(QWidget* parent, [[maybe_unused]] bool wrap,
                               [[maybe_unused]] int lines, const char* name)
    : QLineEdit(parent)
{
    setObjectName(QLatin1String(name));
    setContextMenuPolicy(Qt::NoContextMenu);
}
