#pragma once

#include <memory>

class QWidget;

/// A plain widget in the place of a main window, as large as the screen, and shown.
std::unique_ptr<QWidget> showMainWidget();
