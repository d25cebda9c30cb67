#pragma once

#include <QLineEdit>

/// The framework's entry field, here always of one line. Keys that mean nothing to it (soft keys,
/// function keys, Up, Down and Return) are left to its parent.
class ZMultiLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    /// `wrap` and `lines` shape a field of several lines and are not used.
    ZMultiLineEdit(QWidget* parent, bool wrap, int lines, const char* name);
};
